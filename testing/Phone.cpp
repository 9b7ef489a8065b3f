#include <oz/testing/Phone.hpp>

#include "PhoneLink.hpp"

#include <oz/client/DaemonObjects.hpp>
#include <oz/client/PrivateDaemon.hpp>
#include <oz/client/Waiting.hpp>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLocale>
#include <QStandardPaths>

#include <atomic>
#include <cerrno>
#include <dlfcn.h>
#include <limits>
#include <utility>

namespace oz::testing {

using client::DaemonClient;
using client::DaemonError;
namespace DaemonObjects = client::DaemonObjects;
using client::PrivateDaemon;

PhoneError::PhoneError(const QString &text) : std::runtime_error(text.toStdString()) { }

PhoneError::~PhoneError() = default;

namespace {

const QString Scenario = QStringLiteral("the scenario"); // in errors
const QString State = QStringLiteral("state");
constexpr qint64 Newest = std::numeric_limits<qint64>::max(); // skips a whole log or list
constexpr qsizetype MostShown = 10; // requests in an error

// The phone that this process sees.
std::atomic<const Phone *> s_ofProcess = nullptr;

// The services' program: the one that the environment names, else the one beside this library, in a build
// tree or installed, else the one in the path.
QString daemonProgram()
{
    const QString name = QStringLiteral("ozdeviced");
    if (const QString chosen = qEnvironmentVariable("OZ_DEVICED"); !chosen.isEmpty())
        return chosen;
    Dl_info library{};
    if (::dladdr(reinterpret_cast<const void *>(&daemonProgram), &library) && library.dli_fname) {
        const QDir folder = QFileInfo(QFile::decodeName(library.dli_fname)).absoluteDir();
        for (const char *programs : {OZ_PROGRAMS_FROM_LIBRARY, "../bin"}) {
            const QString program = QDir::cleanPath(folder.filePath(QLatin1String(programs) + u'/' + name));
            if (QFileInfo(program).isExecutable())
                return program;
        }
    }
    return QStandardPaths::findExecutable(name).isEmpty() ? name : QStandardPaths::findExecutable(name);
}

double seconds(std::chrono::milliseconds limit)
{
    return double(limit.count()) / 1000;
}

QString limitText(std::chrono::milliseconds limit)
{
    return QString::number(seconds(limit)) + QLatin1String(" s");
}

// The state of the scenario, without its log.
QVariantMap playing(const DaemonClient &daemon)
{
    return daemon.ask(QStringLiteral("scenario"), QVariantMap{{QStringLiteral("from"), Newest}}).toMap();
}

PhoneRequest requestOf(const QVariantMap &told)
{
    return {told.value(QStringLiteral("request")).toString(), told.value(QStringLiteral("values")).toMap(),
        std::chrono::milliseconds(qint64(told.value(QStringLiteral("at")).toDouble() * 1000))};
}

QString textOf(const PhoneRequest &request)
{
    QString text = request.kind;
    for (auto value = request.values.cbegin(); value != request.values.cend(); ++value)
        text += u' ' + value.key() + u'=' + value->toString();
    return text;
}

// For a call in which the services wait up to \a limit before they answer.
DaemonClient::Wait waitBeyond(std::chrono::milliseconds limit)
{
    return {limit + DaemonClient::AnswerLimit, true};
}

std::unique_ptr<PrivateDaemon> startServices(const PhoneSettings &settings)
{
    try {
        return std::make_unique<PrivateDaemon>(
            PrivateDaemon::Setup{.program = daemonProgram(), .phone = settings.text()});
    } catch (const DaemonError &error) {
        throw PhoneError(error.text());
    }
}

} // namespace

class Phone::Private
{
public:
    explicit Private(const PhoneSettings &settings)
        : services(startServices(settings)), link(services->root())
    {
        (void)link.request(QStringLiteral("a phone's start"), QStringLiteral("observe"));
    }

    // Reads all pages.
    [[nodiscard]] QList<PhoneRequest> requests(const QString &kind, const QString &with = {}) const
    {
        QList<PhoneRequest> all;
        QVariantMap order{{QStringLiteral("request"), kind}, {QStringLiteral("with"), with}};
        for (qint64 next = from;;) {
            order.insert(QStringLiteral("from"), next);
            const QVariantMap told = link.request(kind, QStringLiteral("requests"), order);
            const QVariantList page = told.value(QStringLiteral("requests")).toList();
            if (page.isEmpty())
                return all;
            for (const QVariant &each : page)
                all.append(requestOf(each.toMap()));
            next = page.last().toMap().value(QStringLiteral("number")).toLongLong() + 1;
        }
    }

    // What was asked, for errors.
    [[nodiscard]] QString askedText() const
    {
        QStringList asked;
        for (const PhoneRequest &request : requests({}))
            asked.append(textOf(request));
        if (asked.isEmpty())
            return QStringLiteral("nothing was asked");
        return QLatin1String("asked was ") + asked.last(std::min(MostShown, asked.size())).join(u", ");
    }

    std::unique_ptr<PrivateDaemon> services;
    PhoneLink link;
    std::atomic<qint64> from = 0; // the number of the first request that counts
    QByteArray rootBefore;
};

Phone::Phone(const PhoneSettings &settings, Root root)
{
    const Phone *none = nullptr;
    if (root == Root::OfProcess && !s_ofProcess.compare_exchange_strong(none, this))
        throw PhoneError(
            QStringLiteral("this process sees another phone already; phones beside it have a Root::Own"));
    try {
        d = std::make_unique<Private>(settings);
    } catch (...) {
        const Phone *self = this;
        s_ofProcess.compare_exchange_strong(self, nullptr);
        throw;
    }
    setLink(d->link);
    if (root == Root::OfProcess) {
        d->rootBefore = qgetenv("OZ_DEVICE_ROOT");
        qputenv("OZ_DEVICE_ROOT", QFile::encodeName(d->services->root()));
    }
}

Phone::~Phone()
{
    if (s_ofProcess != this)
        return;
    if (d->rootBefore.isNull())
        qunsetenv("OZ_DEVICE_ROOT");
    else
        qputenv("OZ_DEVICE_ROOT", d->rootBefore);
    s_ofProcess = nullptr;
}

QString Phone::root() const
{
    return d->services->root();
}

QProcessEnvironment Phone::environment() const
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("OZ_DEVICE_ROOT"), root());
    return environment;
}

qint64 Phone::processId() const
{
    return d->services->id();
}

void Phone::tell(const QStringList &words)
{
    d->link.tell(words);
}

QStringList Phone::orders() const
{
    return d->link.orders();
}

QVariant Phone::value(const QString &name) const
{
    return d->link.value(name);
}

bool Phone::holds(const QString &condition) const
{
    return d->link.guarded(condition, [&](const DaemonClient &daemon) {
        try {
            (void)daemon.ask(QStringLiteral("await"), QVariantMap{{QStringLiteral("condition"), condition}});
        } catch (const DaemonError &error) {
            if (error.kind() == DaemonError::Refused && error.error() == ETIMEDOUT)
                return false;
            throw;
        }
        return true;
    });
}

void Phone::waitFor(const QString &condition, std::chrono::milliseconds limit) const
{
    const QVariantMap order{
        {QStringLiteral("condition"), condition}, {QStringLiteral("within"), seconds(limit)}};
    (void)d->link.guarded(condition, [&](const DaemonClient &daemon) {
        return daemon.ask(QStringLiteral("await"), order, waitBeyond(limit));
    });
}

void Phone::waitUntil(
    const std::function<bool()> &isTrue, std::chrono::milliseconds limit, const QString &what) const
{
    if (client::waitUntil(isTrue, limit))
        return;
    d->link.fail(what.isEmpty() ? QStringLiteral("what was waited for") : what,
        QLatin1String("it did not come within ") + limitText(limit) + QLatin1String("; ") + d->askedText());
}

void Phone::waitUntilHandled(std::chrono::milliseconds limit) const
{
    const QString what = QStringLiteral("what the applications have to handle");
    const QString problem =
        d->link.guarded(what, [&](const DaemonClient &) { return client::waitUntilHandled(root(), limit); });
    if (!problem.isEmpty())
        d->link.fail(what, problem);
}

QList<PhoneRequest> Phone::requests(const QString &kind) const
{
    return d->requests(kind);
}

QList<PhoneRequest> Phone::waitForRequests(
    int count, const QString &kind, const QString &with, std::chrono::milliseconds limit) const
{
    QList<PhoneRequest> found;
    const auto hasCome = [&] { return (found = d->requests(kind, with)).size() >= count; };
    const QString what = with.isEmpty() ? kind : QString(kind + QLatin1String(" with ") + with);
    const bool areThere = d->link.guarded(what, [&](const DaemonClient &daemon) {
        return daemon.follow(DaemonObjects::Requests, {limit, true}, hasCome);
    });
    if (areThere)
        return found;
    d->link.fail(what,
        QStringLiteral("%1 of %2 came within %3; ").arg(found.size()).arg(count).arg(limitText(limit))
            + d->askedText());
}

void Phone::forgetRequests()
{
    const QVariantMap order{{QStringLiteral("from"), Newest}};
    d->from = d->link.request(QStringLiteral("requests"), QStringLiteral("requests"), order)
                  .value(QStringLiteral("next"))
                  .toLongLong();
}

void Phone::play(const QString &file, const PlayOptions &options)
{
    QVariantMap order{{QStringLiteral("file"), QFileInfo(file).absoluteFilePath()},
        {QStringLiteral("variables"), options.variables}, {QStringLiteral("keep-going"), options.keepGoing}};
    // As text, which can carry NaN too, so that the services refuse it.
    order.insert(
        QStringLiteral("speed"), QString::number(options.speed, 'g', QLocale::FloatingPointShortest));
    if (options.waitFor != PlayOptions::WaitFor::Nothing) {
        const bool isOpen = options.waitFor == PlayOptions::WaitFor::Open;
        order.insert(QStringLiteral("wait-for"), isOpen ? QStringLiteral("open") : QStringLiteral("request"));
        order.insert(QStringLiteral("wait-limit"), seconds(options.waitLimit));
    }
    (void)d->link.request(file, QStringLiteral("play"), order);
}

bool Phone::isPlaying() const
{
    return d->link.guarded(Scenario, [](const DaemonClient &daemon) {
        try {
            return playing(daemon).value(State) == QStringLiteral("playing");
        } catch (const DaemonError &error) {
            if (error.kind() == DaemonError::Refused)
                return false; // no scenario has been played
            throw;
        }
    });
}

void Phone::waitUntilPlayed(std::chrono::milliseconds limit) const
{
    QVariantMap told;
    const bool isOver = d->link.guarded(Scenario, [&](const DaemonClient &daemon) {
        return daemon.follow(DaemonObjects::Scenario, {limit, true}, [&] {
            told = playing(daemon);
            return told.value(State) != QStringLiteral("playing");
        });
    });
    if (!isOver)
        d->link.fail(Scenario, QLatin1String("it still plays after ") + limitText(limit));
    if (told.value(State) == QStringLiteral("passed"))
        return;
    const bool isLate = told.value(QStringLiteral("late")).toBool();
    d->link.fail(Scenario,
        told.value(QStringLiteral("problem")).toString()
            + (isLate ? QLatin1String("; it began without an application") : QLatin1String()));
}

void Phone::stopPlaying()
{
    (void)d->link.request(Scenario, QStringLiteral("stop-scenario"));
}

QString Phone::log() const
{
    return d->services->log();
}

} // namespace oz::testing
