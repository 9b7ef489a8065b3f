#include "core/Daemon.hpp"

#include "core/Error.hpp"
#include "core/Facilities.hpp"
#include "core/Log.hpp"

#include <oz/DeviceRoot.hpp>
#include <oz/PpsPublisher.hpp>

#include <QCoreApplication>
#include <QDir>
#include <QFile>

#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

namespace oz::services {

namespace {

const QString StatusPpsPath = QStringLiteral("/pps/system/ozdeviced/status");
const QString ControlPpsPath = QStringLiteral("/pps/system/ozdeviced/control");

} // namespace

// One daemon a root. The kernel gives the lock up with its process, so a daemon that was killed is in
// nobody's way.
class Daemon::RootLock
{
public:
    RootLock()
    {
        const QString tree = devicePath(QStringLiteral("/pps"));
        if (!QDir().mkpath(tree))
            throw Error(QLatin1String("cannot make the directory ") + tree);
        const QByteArray file = QFile::encodeName(tree + QLatin1String("/.ozdeviced.lock"));
        m_fd = ::open(file.constData(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600);
        if (m_fd < 0)
            throw Error(QFile::decodeName(file) + QLatin1String(": ") + qt_error_string(errno));
        if (::flock(m_fd, LOCK_EX | LOCK_NB) < 0) {
            char pid[16] = "";
            const ssize_t size = ::read(m_fd, pid, sizeof pid - 1);
            ::close(m_fd);
            throw Error(QLatin1String("another ozdeviced (process ")
                + QString::fromLatin1(pid, std::max<ssize_t>(size, 0)).trimmed() + QLatin1String(") serves ")
                + tree);
        }
        const QByteArray pid = QByteArray::number(qlonglong(QCoreApplication::applicationPid())) + '\n';
        if (::ftruncate(m_fd, 0) < 0 || ::write(m_fd, pid.constData(), std::size_t(pid.size())) < 0)
            throw Error(QFile::decodeName(file) + QLatin1String(": ") + qt_error_string(errno));
    }
    ~RootLock() { ::close(m_fd); }
    RootLock(const RootLock &) = delete;
    RootLock &operator=(const RootLock &) = delete;

private:
    int m_fd = -1;
};

Daemon::Daemon(const SourceConfig &config, const JsonNode &phoneFile)
    : m_lock(std::make_unique<RootLock>()), m_phone(phoneFile),
      m_control(ControlPpsPath, [this](const Request &request) { return onRequest(request); })
{
    const Startup startup;
    for (const Facility &facility : facilities()) {
        QString source = config.sourceOf(facility.name);
        try {
            m_facilities.push_back(facility.sources.value(source)(m_phone));
        } catch (const SourceUnavailable &error) {
            qCWarning(logServices).noquote() << QString(facility.name + QLatin1String(": ")
                + QString::fromUtf8(error.what()) + QLatin1String("; the simulated phone feeds it instead"));
            source = QLatin1String(SourceConfig::Simulated);
            m_facilities.push_back(facility.sources.value(source)(m_phone));
        }
        m_sources.insert(facility.name, source);
    }
    PpsPublisher status(StatusPpsPath);
    if (!status.replace({{QStringLiteral("pid"), QCoreApplication::applicationPid()},
            {QStringLiteral("sources"), m_sources}}))
        throw Error(
            QLatin1String("cannot publish ") + StatusPpsPath + QLatin1String(": ") + status.errorString());
    m_control.start(0600);
}

Daemon::~Daemon()
{
    PpsPublisher(StatusPpsPath).remove();
}

std::optional<Reply> Daemon::onRequest(const Request &request)
{
    if (request.message == u"describe") {
        return Reply{QVariantMap{{QStringLiteral("simulated"), m_phone.describe()},
                         {QStringLiteral("sources"), m_sources}},
            0, {}};
    }
    if (request.message == u"sim") {
        const QVariantMap order = request.data.toMap();
        const QString facility = order.value(QStringLiteral("facility")).toString();
        if (const QString source = m_sources.value(facility).toString();
            !source.isEmpty() && source != QLatin1String(SourceConfig::Simulated)) {
            return Reply::failure(EINVAL,
                facility + QLatin1String(" is fed by '") + source
                    + QLatin1String("', not by the simulated phone"));
        }
        QStringList words = order.value(QStringLiteral("arguments")).toStringList();
        words.prepend(order.value(QStringLiteral("verb")).toString());
        const QString problem = m_phone.run(facility, words);
        return problem.isEmpty() ? Reply{} : Reply::failure(EINVAL, problem);
    }
    return Reply::failure(EINVAL,
        QLatin1String("unknown request '") + request.message + QLatin1String("'; known are describe, sim"));
}

} // namespace oz::services
