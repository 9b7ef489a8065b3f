#pragma once

#include <QHostAddress>
#include <QList>
#include <QObject>
#include <QTcpSocket>
#include <QTimer>

#include <chrono>

namespace oz::cast {

/*! Finds out which addresses accept a connection, which is closed at once. */
class Probe : public QObject
{
    Q_OBJECT

public:
    struct Target
    {
        QHostAddress address;
        quint16 port;
    };

    /*! Begins; it owns itself, and ends with done(). */
    Probe(const QList<Target> &targets, std::chrono::milliseconds limit, QObject *parent);

Q_SIGNALS:
    void done(const QList<QHostAddress> &accepting);

private:
    void onAnswer();
    void finish();

    QList<QHostAddress> m_accepting;
    qsizetype m_open = 0;
    QTimer m_limit;
};

} // namespace oz::cast
