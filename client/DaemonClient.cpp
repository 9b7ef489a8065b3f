#include <oz/client/DaemonClient.hpp>

#include "ControlSocket.hpp"

#include <oz/DeviceRoot.hpp>
#include <oz/PpsObject.hpp>
#include <oz/client/DaemonObjects.hpp>

#include <QDeadlineTimer>
#include <QFile>
#include <QFileInfo>
#include <QSocketNotifier>
#include <QThread>
#include <QTimer>

#include <cerrno>
#include <csignal>
#include <memory>
#include <sys/inotify.h>
#include <unistd.h>

namespace oz::client {

namespace {

constexpr int Pause = 2; // milliseconds between attempts to reach a daemon
constexpr int LookEvery = 20; // milliseconds, where the kernel cannot tell of changes

DaemonError unreachable(int error)
{
    return {DaemonError::Unreachable, error, qt_error_string(error)};
}

DaemonError lost(int error)
{
    return {DaemonError::Lost, error, qt_error_string(error)};
}

QByteArray messageOf(const QString &request, const QVariant &data)
{
    QVariantMap attributes{{QStringLiteral("msg"), request}};
    if (data.isValid())
        attributes.insert(QStringLiteral("dat"), data);
    bool ok = false;
    const QByteArray message = PpsObject::encode(attributes, &ok);
    if (!ok)
        throw DaemonError(DaemonError::Refused, EINVAL, QStringLiteral("the request has no text form"));
    return message;
}

// The "dat" of an answer; throws where it is an error.
QVariant dataOf(const QByteArray &message)
{
    bool ok = false;
    const QVariantMap answer = PpsObject::decode(message, &ok).value(QStringLiteral("@control")).toMap();
    if (!ok)
        throw DaemonError(DaemonError::Lost, EBADMSG, QStringLiteral("the answer is malformed"));
    if (const int error = answer.value(QStringLiteral("err")).toInt())
        throw DaemonError(DaemonError::Refused, error, answer.value(QStringLiteral("errstr")).toString());
    return answer.value(QStringLiteral("dat"));
}

// Wakes whoever polls its descriptor when an object under any device root changes, or comes.
class ObjectWatch
{
public:
    explicit ObjectWatch(const QString &file) : m_events(::inotify_init1(IN_CLOEXEC | IN_NONBLOCK))
    {
        const QByteArray folder = QFile::encodeName(QFileInfo(file).path());
        m_isWatching = ::inotify_add_watch(descriptor(), folder.constData(), IN_MOVED_TO | IN_DELETE) >= 0;
    }

    [[nodiscard]] int descriptor() const { return m_events.get(); }
    /*! False where the user's watches are used up. */
    [[nodiscard]] bool isWatching() const { return m_isWatching; }
    void clear() const
    {
        char events[4096];
        while (::read(descriptor(), events, sizeof events) > 0) { }
    }

private:
    UniqueFd m_events;
    bool m_isWatching = false;
};

bool isProcess(const QString &statusFile)
{
    QFile status(statusFile);
    if (!status.open(QIODevice::ReadOnly))
        return false;
    const QVariantMap attributes =
        PpsObject::decode(status.readAll()).value(QStringLiteral("@status")).toMap();
    const auto process = pid_t(attributes.value(QStringLiteral("pid")).toInt());
    return process > 0 && (::kill(process, 0) == 0 || errno == EPERM);
}

} // namespace

QString DaemonClient::fileOf(const QString &path) const
{
    return m_root.isEmpty() ? devicePath(path) : m_root + path;
}

QVariant DaemonClient::ask(const QString &request, const QVariant &data, const Wait &wait) const
{
    const QByteArray message = messageOf(request, data);
    const QDeadlineTimer deadline(wait.limit);
    ControlSocket socket;
    int error = 0;
    while ((error = socket.connect(fileOf(DaemonObjects::Control))) == EAGAIN && !deadline.hasExpired())
        QThread::msleep(Pause);
    if (error && error != EAGAIN)
        throw unreachable(error);
    if (!error && (error = socket.send(message)) != 0)
        throw lost(error);
    QByteArray answer;
    while (!error && (error = socket.receive(&answer)) == EAGAIN && !deadline.hasExpired()) {
        waitForInput({socket.descriptor()}, deadline, wait.runsEventLoop);
        error = 0;
    }
    if (error == EAGAIN)
        throw DaemonError(DaemonError::Silent, ETIMEDOUT, qt_error_string(ETIMEDOUT));
    if (error)
        throw lost(error);
    return dataOf(answer);
}

void DaemonClient::askLater(
    const QString &request, const QVariant &data, QObject *context, const Answered &answered) const
{
    const auto socket = std::make_shared<ControlSocket>();
    std::optional<DaemonError> problem;
    try {
        const QByteArray message = messageOf(request, data);
        if (const int error = socket->connect(fileOf(DaemonObjects::Control)))
            problem = unreachable(error);
        else if (const int failure = socket->send(message))
            problem = lost(failure);
    } catch (const DaemonError &error) {
        problem = error;
    }
    if (problem) {
        QTimer::singleShot(0, context, [answered, problem] { answered({}, problem); });
        return;
    }
    auto *input = new QSocketNotifier(socket->descriptor(), QSocketNotifier::Read, context);
    QObject::connect(input, &QSocketNotifier::activated, context, [socket, input, answered] {
        input->setEnabled(false);
        input->deleteLater();
        QVariant told;
        std::optional<DaemonError> failure;
        try {
            QByteArray answer;
            if (const int error = socket->receive(&answer))
                throw lost(error);
            told = dataOf(answer);
        } catch (const DaemonError &error) {
            failure = error;
        }
        answered(told, failure);
    });
}

void DaemonClient::watchEnd(QObject *context, const std::function<void()> &ended) const
{
    const auto socket = std::make_shared<ControlSocket>();
    const auto again = [client = *this, context, ended] { client.watchEnd(context, ended); };
    if (const int error = socket->connect(fileOf(DaemonObjects::Control))) {
        if (error == EAGAIN)
            QTimer::singleShot(Pause, context, again);
        else
            QTimer::singleShot(0, context, ended);
        return;
    }
    auto *input = new QSocketNotifier(socket->descriptor(), QSocketNotifier::Read, context);
    QObject::connect(input, &QSocketNotifier::activated, context, [socket, input, again] {
        input->setEnabled(false);
        input->deleteLater();
        // A daemon with many clients closes idle connections.
        again();
    });
}

bool DaemonClient::follow(const QString &path, const Wait &wait, const std::function<bool()> &look) const
{
    const QDeadlineTimer deadline(wait.limit);
    const ObjectWatch watch(fileOf(path));
    std::unique_ptr<ControlSocket> connection;
    const auto connect = [&] {
        connection = std::make_unique<ControlSocket>();
        if (const int error = connection->connect(fileOf(DaemonObjects::Control)))
            throw unreachable(error);
    };
    connect();
    while (!look()) {
        if (deadline.hasExpired())
            return false;
        const QDeadlineTimer next(watch.isWatching() ? deadline.remainingTime()
                                                     : qMin<qint64>(deadline.remainingTime(), LookEvery));
        waitForInput({watch.descriptor(), connection->descriptor()}, next, wait.runsEventLoop);
        watch.clear();
        // A daemon with many clients closes idle connections.
        if (QByteArray nothing; connection->receive(&nothing) != EAGAIN)
            connect();
    }
    return true;
}

bool DaemonClient::isReady() const
{
    ControlSocket probe;
    const int error = probe.connect(fileOf(DaemonObjects::Control));
    // The control object is for the daemon's user; others see whether its process lives.
    return error == 0 || error == EAGAIN || (error == EACCES && isProcess(fileOf(DaemonObjects::Status)));
}

bool DaemonClient::waitUntilReady(std::chrono::milliseconds limit, const std::function<bool()> &goOn) const
{
    for (const QDeadlineTimer deadline(limit); !isReady(); QThread::msleep(Pause)) {
        if (deadline.hasExpired() || !goOn())
            return false;
    }
    return true;
}

} // namespace oz::client
