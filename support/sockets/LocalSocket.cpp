#include "sockets/LocalSocket.hpp"

#include "files/PlaceLock.hpp"
#include "files/TreeFolder.hpp"

#include <QDeadlineTimer>

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <sys/un.h>

namespace oz::LocalSocket {

namespace {

constexpr qsizetype LongestBeginning = 4096; // bytes of a message that is too long

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
    const int wanted = int(MaxMessageSize);
    ::setsockopt(socket->get(), SOL_SOCKET, SO_SNDBUF, &wanted, sizeof wanted);
    return 0;
}

// The outcome of \a attempt past a reset: a peer that leaves without reading everything is reported once,
// ahead of the messages that it had sent before, which count first.
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

// Lets the next call that would wait for the peer's queue wait until deadline; it fails with EAGAIN then.
void limitSending(int socket, const QDeadlineTimer &deadline)
{
    // None at all would be no limit.
    const auto left = std::max<qint64>(deadline.remainingTimeNSecs() / 1000, 1);
    const timeval limit{left / 1'000'000, left % 1'000'000};
    ::setsockopt(socket, SOL_SOCKET, SO_SNDTIMEO, &limit, sizeof limit);
}

// The size of the next message; 0 at the end of the connection.
int peek(int socket, ssize_t *size)
{
    return pastReset([&] {
        *size = ::recv(socket, nullptr, 0, MSG_PEEK | MSG_TRUNC | MSG_DONTWAIT);
        return *size < 0 ? errno : 0;
    });
}

void waitForInput(int socket, const QDeadlineTimer &deadline)
{
    pollfd input{socket, POLLIN, 0};
    const auto left = [&] { return int(std::min<qint64>(deadline.remainingTime(), INT_MAX)); };
    while (::poll(&input, 1, left()) < 0 && errno == EINTR) { }
}

} // namespace

int connect(const QByteArray &path, Wait wait, UniqueFd *socket, int type)
{
    const Address address(path);
    if (address.error())
        return address.error();
    if (const int error = makeSocket(socket, type, wait))
        return error;
    const QDeadlineTimer deadline(waitLimit());
    int error = 0;
    do {
        if (wait == Wait::Yes)
            limitSending(socket->get(), deadline);
        error = ::connect(socket->get(), address.get(), Address::size()) < 0 ? errno : 0;
    } while (error == EINTR);
    if (error)
        socket->reset();
    return error == EAGAIN && wait == Wait::Yes ? ETIMEDOUT : error;
}

int listen(const QByteArray &path, mode_t mode, UniqueFd *socket, int type)
{
    TreeFolder folder;
    if (const int error = folder.open(path, TreeFolder::Make::Yes))
        return error;
    // Two services may start at once; the lock makes one of them the second.
    PlaceLock lock(folder.fd(), path);
    if (const int error = lock.acquire())
        return error;
    if (const auto &present = lock.present()) {
        UniqueFd probe;
        if (!S_ISSOCK(present->st_mode))
            return EEXIST;
        if (const int error = connect(path, Wait::No, &probe, type);
            error == 0 || error == EAGAIN || error == EPROTOTYPE)
            return EADDRINUSE;
    }
    // It listens before it has its name, so nobody ever meets it half made.
    const QByteArray hidden = folderOf(path) + '/' + hiddenName(path, ".sock");
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
    if (message.size() > MaxMessageSize)
        return EMSGSIZE;
    const int flags = MSG_NOSIGNAL | (wait == Wait::Yes ? 0 : MSG_DONTWAIT);
    const QDeadlineTimer deadline(waitLimit());
    const int error = pastReset([&] {
        if (wait == Wait::Yes)
            limitSending(socket, deadline);
        return ::send(socket, message.constData(), std::size_t(message.size()), flags) < 0 ? errno : 0;
    });
    return error == EAGAIN && wait == Wait::Yes ? ETIMEDOUT : error;
}

int receive(int socket, QByteArray *message, Wait wait, qsizetype most)
{
    ssize_t size = 0;
    int error = peek(socket, &size);
    if (error == EAGAIN && wait == Wait::Yes) {
        waitForInput(socket, QDeadlineTimer(waitLimit()));
        // A message that has come by now counts, even if this process was held up past the limit.
        error = peek(socket, &size);
        if (error == EAGAIN)
            return ETIMEDOUT;
    }
    if (error)
        return error;
    if (size == 0)
        return ECONNRESET;
    // Receiving a part takes the whole message away.
    message->resize(size > most ? std::min(most, LongestBeginning) : size);
    if (::recv(socket, message->data(), std::size_t(message->size()), MSG_DONTWAIT) < 0)
        return errno;
    return size > most ? EMSGSIZE : 0;
}

bool hasEnded(int socket)
{
    ssize_t size = 0;
    const int error = peek(socket, &size);
    return error ? error != EAGAIN : size == 0;
}

} // namespace oz::LocalSocket
