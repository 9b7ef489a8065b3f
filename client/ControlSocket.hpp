#pragma once

#include "base/UniqueFd.hpp"

#include <QByteArray>
#include <QDeadlineTimer>
#include <QString>

#include <initializer_list>

namespace oz::client {

/*! A connection to a served object, in messages. No call waits; each returns an errno. */
class ControlSocket
{
public:
    /*! EAGAIN where the service has too many connections to take another one yet; it can be tried again. */
    [[nodiscard]] int connect(const QString &file);
    [[nodiscard]] int send(const QByteArray &message) const;
    /*! EAGAIN where there is no message, ECONNRESET where none will come any more. */
    [[nodiscard]] int receive(QByteArray *message) const;
    [[nodiscard]] int descriptor() const { return m_socket.get(); }

private:
    UniqueFd m_socket;
};

/*! Waits until one of \a descriptors has input, or the deadline. With \a runsEventLoop, the event loop of a
 * thread that has one runs meanwhile. Negative descriptors are left out. */
void waitForInput(std::initializer_list<int> descriptors, const QDeadlineTimer &deadline, bool runsEventLoop);

} // namespace oz::client
