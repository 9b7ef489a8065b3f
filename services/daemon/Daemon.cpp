#include "daemon/Daemon.hpp"

#include "phone/SimulatedPhone.hpp"
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

// The sources and publishers of one configuration.
class Daemon::Running : public QObject
{
public:
    Running(const Configuration &configuration, const std::optional<JsonNode> &phoneFile, StateStore &store)
        : m_configuration(configuration), m_providers(store, [this, phoneFile, &store]() -> SimulatedParts & {
              return usePhone(phoneFile, store);
          })
    {
        for (const Facility &facility : facilities())
            m_rows.push_back(rowOf(facility));
    }

    // Publishes everything; apart from making the sources, so that a wrong configuration disturbs nothing.
    void publish(Tree &tree)
    {
        m_tree = &tree;
        for (Row &row : m_rows) {
            if (Source *source = m_sources.of(row.facility->name))
                row.publisher = row.facility->publish(*source, m_sources, tree);
        }
        if (m_phone) {
            m_phone->setFurtherVerbs([this](const QString &part, const QString &instance) {
                return furtherVerbs(part, instance);
            });
        }
    }

    [[nodiscard]] bool hasSettled() const
    {
        return std::all_of(m_rows.begin(), m_rows.end(),
            [](const Row &row) { return !row.publisher || row.publisher->hasSettled(); });
    }

    void onChange(QObject *context, const std::function<void()> &slot)
    {
        for (const Row &row : m_rows) {
            if (!row.publisher)
                continue;
            connect(row.publisher.get(), &Publisher::settled, context, slot);
            connect(m_sources.of(row.facility->name), &Source::changed, context, slot);
        }
    }

    [[nodiscard]] QVariantMap sources() const
    {
        QVariantMap sources;
        for (const Row &row : m_rows)
            sources.insert(row.facility->name, row.source);
        return sources;
    }

    // The facilities that the same source fed before.
    [[nodiscard]] QStringList continuedFrom(const QVariantMap &before) const
    {
        QStringList facilities;
        for (const Row &row : m_rows) {
            if (before.value(row.facility->name) == row.source)
                facilities.append(row.facility->name);
        }
        return facilities;
    }

    [[nodiscard]] QVariantMap states() const
    {
        static const QString words[] = {
            QStringLiteral("pending"), QStringLiteral("known"), QStringLiteral("absent")};
        QVariantMap states;
        for (const Row &row : m_rows) {
            const Source *source = m_sources.of(row.facility->name);
            QVariantMap state{{QStringLiteral("source"), row.source},
                {QStringLiteral("state"), source ? words[int(source->presence())] : SourceChoice::None}};
            const QString reason = !source ? row.reason
                : source->isKnown()        ? source->remark()
                                           : source->absence();
            if (!reason.isEmpty())
                state.insert(QStringLiteral("reason"), reason);
            if (row.isAutomatic)
                state.insert(QStringLiteral("auto"), true);
            states.insert(row.facility->name, state);
        }
        return states;
    }

    [[nodiscard]] SimulatedPhone *phoneInUse() const { return m_phone.get(); }

    // Throws Error where there is none.
    [[nodiscard]] SimulatedPhone &phone() const
    {
        if (!m_phone)
            throw Error(QStringLiteral("no facility is fed by the simulated phone"));
        return *m_phone;
    }

    // Throws Error where that cannot be told it.
    void tellPhone(const QString &name, const QStringList &words) { phone().run(simulatedPart(name), words); }

    // Tells orders to a phone that is like this one, and that nobody sees.
    [[nodiscard]] Scenario::CheckOrder makeOrderCheck()
    {
        struct Double
        {
            StateStore store; // in memory
            std::unique_ptr<SimulatedPhone> phone;
        };
        const auto copy = std::make_shared<Double>();
        copy->phone = std::make_unique<SimulatedPhone>(*m_phoneFile, phoneParts(), copy->store);
        copy->phone->clock().setSpeed(0);
        copy->phone->setFurtherVerbs([this](const QString &part, const QString &instance) {
            std::vector<SimVerb> verbs = furtherVerbs(part, instance);
            for (SimVerb &verb : verbs)
                verb.run = verb.check;
            return verbs;
        });
        return [this, copy](const QStringList &words) {
            copy->phone->run(simulatedPart(words.first()), words.mid(1));
        };
    }

private:
    struct Row
    {
        const Facility *facility;
        QString source;
        bool isAutomatic; // not by name in the configuration
        QString reason; // why it is none
        std::unique_ptr<Publisher> publisher;
    };

    // The part of the phone with this name; throws where something else feeds the facility.
    [[nodiscard]] QString simulatedPart(const QString &name) const
    {
        const Facility *facility = findFacility(name);
        for (const Row &row : m_rows) {
            if (row.facility == facility && row.source == SourceChoice::None)
                throw WrongOrder(QLatin1String("nothing feeds ") + row.facility->name);
            if (row.facility == facility && row.source != SimulatedSource) {
                throw WrongOrder(row.facility->name + QLatin1String(" is fed by '") + row.source
                    + QLatin1String("', not by the simulated phone"));
            }
        }
        return facility ? facility->name : name;
    }

    [[nodiscard]] Row rowOf(const Facility &facility)
    {
        const SourceChoice choice = m_configuration.choiceOf(facility.name);
        Row row{&facility, choice.source, choice.source == SourceChoice::Auto, {}, nullptr};
        if (choice.source == SourceChoice::None) {
            row.reason = QStringLiteral("the configuration says so");
            return row;
        }
        QStringList reasons;
        for (const SourceKind &kind : facility.sources) {
            if (choice.source == SourceChoice::Auto) {
                if (!kind.obstacle)
                    continue;
                if (const QString obstacle = kind.obstacle(); !obstacle.isEmpty()) {
                    reasons.append(kind.name + QLatin1String(": ") + obstacle);
                    continue;
                }
            } else if (kind.name != choice.source) {
                continue;
            }
            row.source = kind.name;
            m_sources.add(facility.name, kind.make(m_providers, choice.options));
            return row;
        }
        row.source = SourceChoice::None;
        row.reason = reasons.isEmpty() ? QStringLiteral("this system has no source for it")
                                       : reasons.join(QLatin1String("; "));
        return row;
    }

    [[nodiscard]] SimulatedPhone &usePhone(const std::optional<JsonNode> &file, StateStore &store)
    {
        if (!m_phone) {
            m_phoneFile = file ? *file : readPhoneFile(m_configuration.phoneFile);
            m_phone = std::make_unique<SimulatedPhone>(*m_phoneFile, phoneParts(), store);
        }
        return *m_phone;
    }

    // The faults that services can be told to have.
    [[nodiscard]] std::vector<SimVerb> furtherVerbs(const QString &name, const QString &instance)
    {
        std::vector<SimVerb> verbs;
        for (Row &row : m_rows) {
            if (row.facility->name != name || row.source != SimulatedSource)
                continue;
            verbs.push_back({QStringLiteral("kill-service"), {},
                QStringLiteral("ends the facility's service, as if it had crashed"),
                [&row](const QStringList &) { row.publisher.reset(); }});
            verbs.push_back({QStringLiteral("start-service"), {}, QStringLiteral("starts it again"),
                [this, &row](const QStringList &) {
                    if (!row.publisher)
                        row.publisher =
                            row.facility->publish(*m_sources.of(row.facility->name), m_sources, *m_tree);
                }});
            if (!row.publisher)
                continue;
            const auto faults = row.publisher->faults();
            if (const auto found = faults.find(instance); found != faults.end()) {
                for (const FaultOrder &order : found->second->orders())
                    verbs.push_back(SimVerb::fault(order));
            }
        }
        for (SimVerb &verb : verbs)
            verb.isFault = true;
        return verbs;
    }

    Configuration m_configuration;
    Tree *m_tree = nullptr;
    std::optional<JsonNode> m_phoneFile;
    std::unique_ptr<SimulatedPhone> m_phone; // where something uses it
    Providers m_providers;
    Sources m_sources;
    std::vector<Row> m_rows; // last, so that publishers go before what they follow
};

Daemon::Daemon(const Configuration &configuration, const std::optional<JsonNode> &phone, Start start)
    : m_lock(std::make_unique<RootLock>()), m_store(QStringLiteral("/pps/.ozdeviced")), m_tree(m_store),
      m_status(m_tree, StatusPpsPath), m_phone(m_tree, PhonePpsPath, 0600),
      m_scenarios(m_tree,
          {[this]() -> PhoneClock & { return m_running->phone().clock(); },
              [this](const QStringList &words) { m_running->tellPhone(words.first(), words.mid(1)); },
              [this] { return m_running->makeOrderCheck(); }}),
      m_control(m_tree, ControlPpsPath, requests())
{
    m_phoneChanges.setSingleShot(true);
    m_phoneChanges.setInterval(Together);
    m_phoneChanges.callOnTimeout([this] { publishPhone(); });
    m_control.setMessageLimit(MaxMessageSize); // scenarios come with requests
    if (start == Start::Fresh)
        m_store.clear();
    m_tree.setTrustedGroup(configuration.trustedGroup);
    m_running = std::make_unique<Running>(configuration, phone, m_store);
    m_tree.setContinued(m_running->continuedFrom(m_store.load(SavedSources)));
    m_running->publish(m_tree);
    m_tree.endStart();
    connect(&m_tree, &Tree::problemsChanged, this, &Daemon::checkReady);
    m_running->onChange(this, [this] { checkReady(); });
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
    auto next = std::make_unique<Running>(configuration, std::nullopt, m_store);
    m_scenarios.stop(QStringLiteral("the phone was made anew"));
    m_running.reset();
    m_tree.setTrustedGroup(configuration.trustedGroup);
    m_running = std::move(next);
    m_tree.setContinued(m_running->continuedFrom(m_store.load(SavedSources)));
    m_running->publish(m_tree);
    m_running->onChange(this, [this] { checkReady(); });
    watchPhone();
    checkReady();
    removeLeftovers();
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
