#pragma once

#include "meta/SignalTap.hpp"

#include <QStringListModel>
#include <QtQml/qqmlregistration.h>

#include <memory>
#include <vector>

/*! The last thousand signals of all facilities of the library, the newest last. */
class SignalLog : public QStringListModel
{
    Q_OBJECT
    QML_ELEMENT

public:
    explicit SignalLog(QObject *parent = nullptr);
    ~SignalLog() override;

    Q_INVOKABLE void append(const QString &line);

private:
    std::vector<std::unique_ptr<QObject>> m_facilities;
    std::vector<std::unique_ptr<oz::meta::SignalTap>> m_taps;
};
