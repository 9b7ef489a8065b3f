#pragma once

#include "base/UniqueFd.hpp"

#include <oz/Limits.hpp>

#include <QByteArray>

#include <sys/socket.h>
#include <sys/types.h>

/*!
 * Local sockets (AF_UNIX) at paths of any length: of messages (SOCK_SEQPACKET), or of bytes (SOCK_STREAM).
 * All functions return 0 or an errno.
 */
namespace oz::LocalSocket {

/*! A call that waits for the peer does so for at most waitLimit(), and then fails with ETIMEDOUT. */
enum class Wait { No, Yes };

/*! Connects to the service that listens at \a path. Without waiting, one that has too many to accept is
 * EAGAIN. */
[[nodiscard]] int connect(const QByteArray &path, Wait wait, UniqueFd *socket, int type = SOCK_SEQPACKET);

/*!
 * Listens at \a path, whose directories are made, with the file mode \a mode. What a dead service left there
 * is replaced in one step; a living one is EADDRINUSE, anything else at the path EEXIST.
 */
[[nodiscard]] int listen(const QByteArray &path, mode_t mode, UniqueFd *socket, int type = SOCK_SEQPACKET);

/*! Sends one message. Without waiting, a receiver whose queue is full is EAGAIN; no receiver any more is
 * EPIPE. */
[[nodiscard]] int send(int socket, const QByteArray &message, Wait wait);

/*! Receives one message. Without waiting, none there is EAGAIN; a peer that is gone is ECONNRESET. Of a
 * message of more than \a most bytes, which is EMSGSIZE, \a message has the beginning. */
[[nodiscard]] int receive(int socket, QByteArray *message, Wait wait, qsizetype most = MaxMessageSize);

/*! True if the peer is gone, and everything that it had sent is received. */
[[nodiscard]] bool hasEnded(int socket);

} // namespace oz::LocalSocket
