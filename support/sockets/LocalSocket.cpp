#include "sockets/LocalSocket.hpp"

#include "pps/PpsStateFile.hpp"

#include <oz/PpsText.hpp>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>

namespace oz::LocalSocket {

namespace {

// A socket address holds 107 bytes; a longer path is reached through a descriptor of its directory.
class Address
{
public:
    explicit Address(const QByteArray &path)
    {
        m_address.sun_family = AF_UNIX;
        QByteArray text = path;
        if (text.size() >= qsizetype(sizeof m_address.sun_path)) {
            const qsizetype slash = path.lastIndexOf('/');
            m_directory =
                UniqueFd(::open(path.first(slash + 1).constData(), O_PATH | O_DIRECTORY | O_CLOEXEC));
            if (!m_directory) {
                m_error = errno;
                return;
            }
            text = "/proc/self/fd/" + QByteArray::number(m_directory.get()) + path.sliced(slash);
        }
        if (text.size() >= qsizetype(sizeof m_address.sun_path))
            m_error = ENAMETOOLONG;
        else
            std::memcpy(m_address.sun_path, text.constData(), std::size_t(text.size()));
    }
    [[nodiscard]] int error() const { return m_error; }
    [[nodiscard]] const sockaddr *get() const { return reinterpret_cast<const sockaddr *>(&m_address); }
    [[nodiscard]] static socklen_t size() { return sizeof(sockaddr_un); }

private:
    sockaddr_un m_address{};
    UniqueFd m_directory;
    int m_error = 0;
};

int makeSocket(UniqueFd *socket, int type, Wait wait = Wait::Yes)
{
    const int flags = SOCK_CLOEXEC | (wait == Wait::No ? SOCK_NONBLOCK : 0);
    *socket = UniqueFd(::socket(AF_UNIX, type | flags, 0));
    if (!*socket)
        return errno;
    // One message has to fit the send buffer; the kernel grants what its limit allows.
    const int wanted = int(PpsText::MaxMessageSize);
    ::setsockopt(socket->get(), SOL_SOCKET, SO_SNDBUF, &wanted, sizeof wanted);
    return 0;
}

// What attempt comes to in the end. A peer that leaves without reading everything is reported once, ahead of
// the messages that it had sent before; those count first.
template <typename Attempt>
int pastReset(const Attempt &attempt)
{
    bool reset = false;
    for (;;) {
        const int error = attempt();
        if (error != EINTR && (error != ECONNRESET || std::exchange(reset, true)))
            return error;
    }
}

} // namespace

int connect(const QByteArray &path, Wait wait, UniqueFd *socket, int type)
{
    const Address address(path);
    if (address.error())
        return address.error();
    if (const int error = makeSocket(socket, type, wait))
        return error;
    while (::connect(socket->get(), address.get(), Address::size()) < 0) {
        if (errno != EINTR) {
            const int error = errno;
            socket->reset();
            return error;
        }
    }
    return 0;
}

int listen(const QByteArray &path, mode_t mode, UniqueFd *socket, int type)
{
    if (const int error = PpsStateFile::makeDirectoryOf(path))
        return error;
    // Of two services that start at once, one comes second.
    PpsStateFile::PublishLock lock(path);
    if (const int error = lock.acquire())
        return error;
    struct stat status;
    if (::lstat(path.constData(), &status) == 0) {
        UniqueFd probe;
        if (!S_ISSOCK(status.st_mode))
            return EEXIST;
        if (const int error = connect(path, Wait::No, &probe, type);
            error == 0 || error == EAGAIN || error == EPROTOTYPE)
            return EADDRINUSE;
    }
    // It listens before it has its name, so nobody ever meets it half made.
    const QByteArray hidden = PpsStateFile::hiddenPath(path, ".sock");
    if (::unlink(hidden.constData()) < 0 && errno != ENOENT)
        return errno;
    const Address address(hidden);
    if (address.error())
        return address.error();
    if (const int error = makeSocket(socket, type))
        return error;
    int error = 0;
    if (::bind(socket->get(), address.get(), Address::size()) < 0)
        error = errno;
    else if (::chmod(hidden.constData(), mode) < 0 || ::listen(socket->get(), SOMAXCONN) < 0
        || ::rename(hidden.constData(), path.constData()) < 0) {
        error = errno;
        ::unlink(hidden.constData());
    }
    if (error)
        socket->reset();
    return error;
}

int send(int socket, const QByteArray &message, Wait wait)
{
    // An empty message could not be told from the end of the connection.
    if (message.isEmpty())
        return EINVAL;
    if (message.size() > PpsText::MaxMessageSize)
        return EMSGSIZE;
    const int flags = MSG_NOSIGNAL | (wait == Wait::Yes ? 0 : MSG_DONTWAIT);
    const auto attempt = [&] {
        return ::send(socket, message.constData(), std::size_t(message.size()), flags) < 0 ? errno : 0;
    };
    return pastReset(attempt);
}

int receive(int socket, QByteArray *message, Wait wait)
{
    const int flags = wait == Wait::Yes ? 0 : MSG_DONTWAIT;
    ssize_t size = 0;
    const auto attempt = [&] {
        size = ::recv(socket, nullptr, 0, MSG_PEEK | MSG_TRUNC | flags);
        return size < 0 ? errno : 0;
    };
    if (const int error = pastReset(attempt))
        return error;
    if (size == 0)
        return ECONNRESET;
    message->resize(std::min<ssize_t>(size, PpsText::MaxMessageSize));
    if (::recv(socket, message->data(), std::size_t(message->size()), MSG_DONTWAIT) < 0)
        return errno;
    return size > PpsText::MaxMessageSize ? EMSGSIZE : 0;
}

} // namespace oz::LocalSocket
