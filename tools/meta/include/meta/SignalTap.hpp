#pragma once

#include <QMetaMethod>
#include <QObject>
#include <QVariantList>

#include <functional>
#include <vector>

namespace oz::meta {

/*! Receives every signal that an object's classes below QObject declare, in the order of emission. */
class SignalTap : public QObject
{
public:
    using Handler = std::function<void(const QMetaMethod &signal, const QVariantList &arguments)>;

    SignalTap(QObject *sender, Handler handler);

    int qt_metacall(QMetaObject::Call call, int id, void **arguments) override;

private:
    std::vector<QMetaMethod> m_signals;
    Handler m_handler;
};

} // namespace oz::meta
