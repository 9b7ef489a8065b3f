#include "daemon/Daemon.hpp"

#include "daemon/RunningFacilities.hpp"
#include "publishing/Log.hpp"
#include "scenario/Recorder.hpp"
#include "source/Error.hpp"

#include <oz/DeviceRoot.hpp>
#include <oz/Limits.hpp>
#include <oz/PpsPublisher.hpp>
#include <oz/TreeFiles.hpp>

#include <QCoreApplication>
#include <QJsonDocument>
#include <QJsonObject>

#include <array>
#include <cerrno>
#include <sys/file.h>
#include <unistd.h>

namespace oz::services {

namespace {

const QString StatusPpsPath = QStringLiteral("/pps/system/ozdeviced/status");
const QString ControlPpsPath = QStringLiteral("/pps/system/ozdeviced/control");
const QString PhonePpsPath = QStringLiteral("/pps/system/ozdeviced/phone");
// Looking at the phone takes about two milliseconds, and people see no more changes than this.
constexpr std::chrono::milliseconds Together(50);
// In the store.
const QString SavedObjects = QStringLiteral("objects");
const QString SavedSources = QStringLiteral("sources");

} // namespace

// One daemon a root. The kernel gives the lock up with its process, so a daemon that was killed is in
// nobody's way.
class Daemon::RootLock
{
public:
    RootLock()
    {
        const QString tree = QStringLiteral("/pps");
        QString problem;
        if (const int error = TreeFiles::open(tree + QLatin1String("/.ozdeviced.lock"), &m_fd, &problem)) {
            throw Error(QLatin1String("cannot serve ") + devicePath(tree) + QLatin1String(": ")
                + (problem.isEmpty() ? qt_error_string(error) : problem));
        }
        if (::flock(m_fd, LOCK_EX | LOCK_NB) < 0) {
            char pid[16] = "";
            const ssize_t size = ::read(m_fd, pid, sizeof pid - 1);
            ::close(m_fd);
            throw Error(QLatin1String("another ozdeviced (process ")
                + QString::fromLatin1(pid, std::max<ssize_t>(size, 0)).trimmed() + QLatin1String(") serves ")
                + devicePath(tree));
        }
        // Its number is for the person who starts a second one; a full file system has no room for it.
        const QByteArray pid = QByteArray::number(qlonglong(QCoreApplication::applicationPid())) + '\n';
        if (::ftruncate(m_fd, 0) == 0)
            (void)!::write(m_fd, pid.constData(), std::size_t(pid.size()));
    }
    ~RootLock() { ::close(m_fd); }
    RootLock(const RootLock &) = delete;
    RootLock &operator=(const RootLock &) = delete;

private:
    int m_fd = -1;
};

Daemon::Daemon(const Configuration &configuration, const std::optional<JsonNode> &phone, Start start)
    : m_lock(std::make_unique<RootLock>()), m_store(QStringLiteral("/pps/.ozdeviced")), m_tree(m_store),
      m_status(m_tree, StatusPpsPath), m_phone(m_tree, PhonePpsPath, 0600),
      m_scenarios(m_tree,
          {[this]() -> PhoneClock & { return m_running->phone().clock(); },
              [this](const QStringList &words) { m_running->tellPhone(words.first(), words.mid(1)); },
              [this] { return m_running->makeOrderCheck(); }, [this] { return m_running->sinkNames(); }}),
      m_control(m_tree, ControlPpsPath, requests())
{
    m_phoneChanges.setSingleShot(true);
    m_phoneChanges.setInterval(Together);
    m_phoneChanges.callOnTimeout([this] { publishPhone(); });
    m_control.setMessageLimit(MaxMessageSize); // scenarios come with requests
    if (start == Start::Fresh)
        m_store.clear();
    run(configuration, std::make_unique<RunningFacilities>(configuration, phone, m_store));
    m_tree.endStart();
    connect(&m_tree, &Tree::problemsChanged, this, &Daemon::checkReady);
    watchPhone();
    checkReady();
}

Daemon::~Daemon()
{
    disconnect(&m_tree, nullptr, this, nullptr);
    m_scenarios.stop(QStringLiteral("the services end"));
    m_running.reset();
    PpsPublisher(StatusPpsPath).remove();
}

void Daemon::reload(const Configuration &configuration)
{
    // A phone or a source that cannot be made is found out before anything is taken down; the store has what
    // the phone is like now, and the new one goes on from there where its file is the same.
    auto next = std::make_unique<RunningFacilities>(configuration, std::nullopt, m_store);
    m_scenarios.stop(QStringLiteral("the phone was made anew"));
    m_running.reset();
    run(configuration, std::move(next));
    watchPhone();
    checkReady();
    removeLeftovers();
}

void Daemon::run(const Configuration &configuration, std::unique_ptr<RunningFacilities> facilities)
{
    m_tree.setTrustedGroup(configuration.trustedGroup);
    m_running = std::move(facilities);
    m_tree.setContinued(m_running->continuedFrom(m_store.load(SavedSources)));
    m_running->publish(m_tree);
    m_running->onChange(this, [this] { checkReady(); });
}

void Daemon::watchPhone()
{
    if (SimulatedPhone *phone = m_running->phoneInUse())
        phone->onChange([this] { publishPhoneLater(); });
    publishPhone();
}

QVariantMap Daemon::description() const
{
    const SimulatedPhone *phone = m_running->phoneInUse();
    return {{QStringLiteral("simulated"), phone ? phone->describe() : QVariantMap()},
        {QStringLiteral("sources"), m_running->sources()}};
}

void Daemon::publishPhoneLater()
{
    if (!m_phoneChanges.isActive())
        m_phoneChanges.start();
}

void Daemon::publishPhone()
{
    m_phoneChanges.stop();
    const SimulatedPhone *phone = m_running->phoneInUse();
    QVariantMap seen = phone ? phone->values() : QVariantMap();
    const auto mark = qHash(QJsonDocument(QJsonObject::fromVariantMap(description())).toJson());
    seen.insert(QStringLiteral("description"), QString::number(mark));
    m_phone.publish(seen);
}

// The daemon's control object is served once everything is published; from then on it says what is missing.
void Daemon::checkReady()
{
    if (!m_running)
        return;
    if (!m_isReady && m_running->hasSettled() && m_tree.isTrue()) {
        m_isReady = true;
        removeLeftovers();
        publishStatus();
        m_control.start(0600);
        Q_EMIT ready();
    } else if (m_isReady) {
        publishStatus();
    }
}

void Daemon::publishStatus()
{
    m_status.publish({{QStringLiteral("pid"), QCoreApplication::applicationPid()},
        {QStringLiteral("sources"), m_running->sources()},
        {QStringLiteral("facilities"), m_running->states()}});
}

// Takes away what a former daemon, or a former configuration, published and nothing publishes any more, and
// notes what there is now.
void Daemon::removeLeftovers()
{
    const QStringList objects = m_tree.objects();
    const QStringList before = m_store.load(SavedObjects).value(SavedObjects).toStringList();
    for (const QString &path : before) {
        if (!path.startsWith(u"/pps/") || objects.contains(path))
            continue;
        if (!PpsPublisher(path).remove())
            TreeFiles::remove(path); // the socket of a service that was killed
    }
    m_store.save(SavedObjects, {{SavedObjects, objects}});
    m_store.save(SavedSources, m_running->sources());
}

RequestTable Daemon::requests()
{
    const auto answered = [this](Reply (Daemon::*handle)(const Request &)) {
        return [this, handle](
                   const Request &request, const Answer &answer) { answer((this->*handle)(request)); };
    };
    RequestTable requests{{QStringLiteral("describe"), {}, answered(&Daemon::describe)},
        {QStringLiteral("sim"), {}, answered(&Daemon::sim)}};
    for (RequestTable &further : std::array{m_scenarios.requests(), m_observation.requests()})
        std::move(further.begin(), further.end(), std::back_inserter(requests));
    return requests;
}

Reply Daemon::describe(const Request &)
{
    QVariantMap described = description();
    described.insert(QStringLiteral("recordable"), Recorder::facilities());
    described.insert(QStringLiteral("version"), QCoreApplication::applicationVersion());
    return {described, 0, {}};
}

Reply Daemon::sim(const Request &request)
{
    const QVariantMap order = request.data.toMap();
    QStringList words = order.value(QStringLiteral("arguments")).toStringList();
    words.prepend(order.value(QStringLiteral("verb")).toString());
    try {
        m_running->tellPhone(order.value(QStringLiteral("facility")).toString(), words);
    } catch (const Error &error) {
        return refusalFor(error);
    }
    if (order.value(QStringLiteral("publish")).toBool())
        publishPhone();
    else
        publishPhoneLater(); // services that die are no change of the phone
    if (!m_tree.isTrue())
        return Reply::failure(EAGAIN, QLatin1String("done, but not published yet: ") + m_tree.problemText());
    return {};
}

} // namespace oz::services
