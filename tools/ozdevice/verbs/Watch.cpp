#include "meta/MetaDescription.hpp"
#include "meta/MetaText.hpp"
#include "meta/SignalTap.hpp"
#include "ozdevice/CounterTable.hpp"
#include "ozdevice/DeviceRootWatch.hpp"
#include "ozdevice/Durations.hpp"
#include "ozdevice/FacilityInstance.hpp"
#include "ozdevice/FacilitySelection.hpp"
#include "ozdevice/Output.hpp"
#include "ozdevice/SignalLines.hpp"
#include "ozdevice/Verbs.hpp"

#include <oz/PpsObject.hpp>

#include <QJsonArray>
#include <QTimer>

#include <algorithm>

namespace oz::tools {

namespace {

struct WatchOptions
{
    FacilitySelection facilities;
    bool json = false;
    bool all = false;
    bool tellsBegin = false;
    int count = 0;
    Duration duration;
    Duration every{1};
    bool hasEvery = false;
};

void printSignal(
    const FacilityInstance &instance, const QMetaMethod &signal, const QVariantList &arguments, bool asJson)
{
    if (!asJson) {
        printLine(lineBeginning(instance) + signalText(signal, arguments));
        return;
    }
    QJsonArray values;
    for (const QVariant &argument : arguments)
        values.append(meta::valueJson(argument));
    QJsonObject line = jsonBeginning(instance);
    line.insert(u"signal"_s, QLatin1String(signal.name()));
    line.insert(u"signature"_s, QLatin1String(signal.methodSignature()));
    line.insert(u"arguments"_s, values);
    printJson(line, QJsonDocument::Compact);
}

void printChange(
    const FacilityInstance &instance, const QString &path, const QVariantMap &changed, bool asJson)
{
    if (asJson) {
        QJsonObject line = jsonBeginning(instance);
        line.insert(u"object"_s, path);
        line.insert(u"changed"_s, meta::valueJson(changed));
        printJson(line, QJsonDocument::Compact);
        return;
    }
    QStringList texts;
    for (auto attribute = changed.cbegin(); attribute != changed.cend(); ++attribute) {
        // A removed attribute is written as in the tree.
        texts.append(attribute->isValid()
                ? QString(attribute.key() + u'=' + painted(Paint::Value, meta::valueText(*attribute)))
                : QString(u'-' + attribute.key()));
    }
    printLine(lineBeginning(instance) + path.section(u'/', -1) + ": "_L1 + texts.join(u' '));
}

// Prints that signals are heard from now on: a change that comes after this line is not missed.
void printBegin(const std::vector<const FacilityEntry *> &entries, bool asJson)
{
    QStringList names;
    for (const FacilityEntry *entry : entries)
        names.append(entry->name);
    if (asJson)
        printJson({{u"watching"_s, QJsonArray::fromStringList(names)}}, QJsonDocument::Compact);
    else
        printLine("watching "_L1 + names.join(", "_L1));
}

// Prints the signals and changes of facilities until a limit of the options is reached.
class Watch
{
public:
    explicit Watch(const WatchOptions &options) : m_options(options), m_remaining(options.count) { }

    // Returns false, after printing the reason, if an object of the facility cannot be opened.
    [[nodiscard]] bool add(const FacilityEntry &entry, const QString &selected);
    void addCounters(const FacilityEntry &entry, const QStringList &selected);
    [[nodiscard]] int run();

private:
    // A facility or one of its instances.
    struct Watched
    {
        FacilityInstance instance;
        std::unique_ptr<meta::SignalTap> tap = {};
        std::vector<std::unique_ptr<PpsObject>> objects = {};
    };

    [[nodiscard]] bool addObject(Watched *watched, const QString &path);
    void printOne(const std::function<void()> &print);

    const WatchOptions &m_options;
    int m_remaining; // lines, if there is a limit
    EventLoop m_loop;
    std::vector<std::unique_ptr<Watched>> m_watched;
    std::vector<std::unique_ptr<CounterTable>> m_tables;
    QTimer m_counterTimer;
};

bool Watch::add(const FacilityEntry &entry, const QString &selected)
{
    Watched &watched =
        *m_watched.emplace_back(new Watched{FacilityInstance(entry, selected, FacilityInstance::MayAppear)});
    const FacilityInstance &instance = watched.instance;
    watched.tap = std::make_unique<meta::SignalTap>(
        instance.object(), [this, &instance](const QMetaMethod &signal, const QVariantList &arguments) {
            if (m_options.all || !meta::isNumericTwin(signal))
                printOne([&] { printSignal(instance, signal, arguments, m_options.json); });
        });
    bool available = instance.reportProblems();
    for (const QString &path : entry.activity)
        available = addObject(&watched, path) && available;
    return available;
}

bool Watch::addObject(Watched *watched, const QString &path)
{
    const FacilityInstance &instance = watched->instance;
    PpsObject *object = watched->objects.emplace_back(std::make_unique<PpsObject>(path + "?delta"_L1)).get();
    if (!object->open(PpsOpenMode::Subscribe)) {
        printError(instance.title() + ": "_L1 + Problem{path, object->error()}.text());
        return false;
    }
    (void)object->read(); // the present content is no change
    QObject::connect(object, &PpsObject::readyRead, [this, &instance, object, path] {
        const QVariantMap message = PpsObject::decode(object->read());
        if (!message.isEmpty())
            printOne([&] { printChange(instance, path, message.first().toMap(), m_options.json); });
    });
    return true;
}

void Watch::addCounters(const FacilityEntry &entry, const QStringList &selected)
{
    if (m_options.every.milliseconds().count() == 0)
        throw CommandError(WrongUse, u"--every is a time longer than 0"_s);
    CounterTable *table =
        m_tables.emplace_back(std::make_unique<CounterTable>(entry, selected, m_options.json)).get();
    m_counterTimer.callOnTimeout([this, table] { printOne([table] { table->printNext(); }); });
    m_counterTimer.setTimerType(Qt::PreciseTimer);
    m_counterTimer.start(m_options.every.milliseconds());
}

int Watch::run()
{
    const DeviceRootWatch rootWatch(&m_loop);
    if (m_options.duration.seconds > 0)
        QTimer::singleShot(m_options.duration.milliseconds(), qApp, &QCoreApplication::quit);
    return m_loop.run();
}

void Watch::printOne(const std::function<void()> &print)
{
    if (m_options.count && m_remaining == 0)
        return;
    m_loop.guard(print);
    if (m_options.count && --m_remaining == 0)
        QCoreApplication::quit();
}

int watch(const WatchOptions &options)
{
    const auto entries = options.facilities.entries();
    const bool hasCounters =
        std::any_of(entries.begin(), entries.end(), [](const auto *entry) { return bool(entry->refresh); });
    if (options.hasEvery && !(hasCounters && options.facilities.isNamed()))
        throw CommandError(WrongUse, u"--every is for counters, which only network has"_s);
    const auto there = availableFacilities(entries);
    Watch watch(options);
    bool available = there.size() == entries.size();
    bool isAnyThere = false;
    for (const FacilityEntry *entry : there) {
        const QStringList instances = options.facilities.instances(*entry);
        if (entry->refresh) {
            // Counters print lines even if nothing happens, so they have to be asked for.
            if (options.facilities.isNamed()) {
                watch.addCounters(*entry, instances);
                isAnyThere = true;
            }
            continue;
        }
        for (const QString &selected : instances) {
            const bool isThere = watch.add(*entry, selected);
            available = isThere && available;
            isAnyThere = isThere || isAnyThere;
        }
    }
    // Without names, whatever is there is watched.
    if (!(options.facilities.isNamed() ? available : isAnyThere))
        return Unavailable;
    if (options.tellsBegin)
        printBegin(there, options.json);
    return watch.run();
}

} // namespace

void addWatchVerb(const Verb &parser, Action &action)
{
    const auto [verb, options] =
        Verbs<WatchOptions>(parser, action)
            .add("watch", "Print each signal of facilities when it is emitted", watch);
    options->facilities.addFacilities(verb);
    options->facilities.addSelectors(verb);
    verb.flag("--json", options->json, "One JSON object per line");
    verb.flag("--all", options->all, "Also the numeric signals that repeat the typed ones");
    verb.flag("--tell-begin", options->tellsBegin, "First a line when everything is watched, for programs");
    verb.duration("--every", options->every.seconds, "How often to read counters (1s)")
        .whenGiven([options = options] { options->hasEvery = true; });
    verb.count("--count", options->count, "End after this number of lines");
    verb.duration("--for", options->duration.seconds, "End after a time (10s, 500ms, 2m)");
    verb.footer(
        "Watches all displays, networks and profiles that exist now, unless an option selects one. Counters\n"
        "are watched only if their facility is named.");
}

} // namespace oz::tools
