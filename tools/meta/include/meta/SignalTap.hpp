#pragma once

#include <QMetaMethod>
#include <QObject>
#include <QVariantList>

#include <functional>
#include <vector>

namespace oz::meta {

/*!
 * Hears every signal that an object's classes below QObject declare, in the order of emission, whatever their
 * parameters are.
 */
class SignalTap : public QObject
{
public:
    using Heard = std::function<void(const QMetaMethod &signal, const QVariantList &arguments)>;

    SignalTap(QObject *sender, Heard heard);

    int qt_metacall(QMetaObject::Call call, int id, void **arguments) override;

private:
    std::vector<QMetaMethod> m_signals;
    Heard m_heard;
};

} // namespace oz::meta
