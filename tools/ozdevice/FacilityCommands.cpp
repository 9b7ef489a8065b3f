// list, show, watch, call and set: everything that works over the meta-objects of the facilities.

#include "meta/MetaText.hpp"
#include "meta/MethodCall.hpp"
#include "meta/SignalTap.hpp"
#include "ozdevice/FacilityTable.hpp"
#include "ozdevice/Verbs.hpp"

#include <oz/PpsObject.hpp>

#include <QCoreApplication>
#include <QDateTime>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QMetaProperty>
#include <QTimer>

#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <cstring>
#include <map>
#include <mutex>
#include <thread>
#include <unistd.h>

namespace oz::tools {

namespace {

struct Options
{
    std::vector<std::string> facilities;
    std::string facility;
    std::string member;
    std::vector<std::string> words;
    std::map<QString, std::string> selected;
    bool json = false;
    bool names = false;
    bool typed = false;
    int count = 0;
    std::string duration;
};

const FacilityEntry &entryOf(const QString &name)
{
    QStringList names;
    for (const FacilityEntry &entry : facilityTable()) {
        if (entry.name == name)
            return entry;
        names.append(entry.name);
    }
    throw CommandError(WrongUse,
        QLatin1String("unknown facility '") + name + QLatin1String("'; known are ") + enumerated(names));
}

// An instance of a facility that lives as long as the command looks at it.
class Instance
{
public:
    Instance(const FacilityEntry &entry, const Options &options) : m_entry(entry)
    {
        const auto selected = options.selected.find(entry.selector);
        m_object = entry.make(
            selected == options.selected.end() ? QString() : QString::fromStdString(selected->second));
    }
    [[nodiscard]] QObject *object() const { return m_object.get(); }
    [[nodiscard]] const FacilityEntry &entry() const { return m_entry; }

    // Says on standard error which of the facility's objects could not be opened; whether all could.
    [[nodiscard]] bool reportUnavailable() const
    {
        bool available = true;
        for (const PpsObject *pps : m_object->findChildren<PpsObject *>()) {
            if (!pps->isOpen() && pps->error() != 0)
                available = report(pps->path() + QLatin1String(": ") + pps->errorString());
        }
        return available;
    }

    // The same of a facility that keeps no object open, or not to be found, once it was made or asked: it has
    // warned.
    [[nodiscard]] bool reportWarnings() const
    {
        const QStringList warnings = takeLibraryWarnings();
        if (!m_object->findChildren<PpsObject *>().isEmpty())
            return true;
        for (const QString &warning : warnings)
            (void)report(warning);
        return warnings.isEmpty();
    }

private:
    [[nodiscard]] bool report(const QString &problem) const
    {
        std::fprintf(stderr, "ozdevice: %s: %s%s\n", qUtf8Printable(m_entry.name), qUtf8Printable(problem),
            problem.contains(QLatin1String(std::strerror(ENOENT)))
                ? " (is ozdeviced running? try: ozdevice run -- COMMAND)"
                : "");
        return false;
    }

    const FacilityEntry &m_entry;
    std::unique_ptr<QObject> m_object;
};

std::vector<const FacilityEntry *> chosen(const Options &options)
{
    std::vector<const FacilityEntry *> entries;
    for (const std::string &name : options.facilities)
        entries.push_back(&entryOf(QString::fromStdString(name)));
    if (entries.empty()) {
        for (const FacilityEntry &entry : facilityTable())
            entries.push_back(&entry);
    }
    return entries;
}

struct Property
{
    QString name;
    QString type;
    QVariant value;
};

std::vector<Property> readProperties(const QObject *object)
{
    std::vector<Property> properties;
    const QMetaObject *type = object->metaObject();
    for (int i = QObject::staticMetaObject.propertyCount(); i < type->propertyCount(); ++i) {
        const QMetaProperty property = type->property(i);
        properties.push_back(
            {QLatin1String(property.name()), meta::typeText(property.metaType()), property.read(object)});
    }
    return properties;
}

void printJson(const QJsonObject &object, QJsonDocument::JsonFormat format)
{
    printLine(QString::fromUtf8(QJsonDocument(object).toJson(format)).trimmed());
}

int list(const Options &options)
{
    for (const FacilityEntry &entry : facilityTable()) {
        if (options.names) {
            printLine(entry.name);
            continue;
        }
        const QString selector =
            entry.selector.isEmpty() ? QString() : QLatin1String(" (--") + entry.selector + u')';
        printLine(painted(Paint::Bold, entry.name.leftJustified(17)) + u' '
            + QLatin1String(entry.type->className())
                  .sliced(int(qstrlen("oz::device::")))
                  .toString()
                  .leftJustified(22)
            + u' ' + entry.help + selector);
    }
    return Success;
}

int show(const Options &options)
{
    bool available = true;
    QJsonObject all;
    for (const FacilityEntry *entry : chosen(options)) {
        const Instance instance(*entry, options);
        available = instance.reportUnavailable() && available;
        const auto properties = readProperties(instance.object());
        available = instance.reportWarnings() && available;
        if (options.json) {
            QJsonObject values;
            for (const Property &property : properties) {
                values.insert(property.name,
                    QJsonObject{{QStringLiteral("type"), property.type},
                        {QStringLiteral("value"), meta::valueJson(property.value)}});
            }
            all.insert(entry->name, values);
            continue;
        }
        qsizetype nameWidth = 0;
        qsizetype typeWidth = 0;
        for (const Property &property : properties) {
            nameWidth = std::max(nameWidth, property.name.size());
            typeWidth = std::max(typeWidth, property.type.size());
        }
        printLine(painted(Paint::Bold, entry->name));
        for (const Property &property : properties) {
            printLine(QLatin1String("  ") + property.name.leftJustified(nameWidth) + QLatin1String("  ")
                + painted(Paint::Dim, property.type.leftJustified(typeWidth)) + QLatin1String("  ")
                + painted(Paint::Value, meta::valueText(property.value)));
        }
    }
    if (options.json)
        printJson(all, QJsonDocument::Indented);
    return available ? Success : Unavailable;
}

QString signalText(const QMetaMethod &signal, const QVariantList &arguments)
{
    QStringList texts;
    for (const QVariant &argument : arguments)
        texts.append(painted(Paint::Value, meta::valueText(argument)));
    return QLatin1String(signal.name()) + u'(' + texts.join(QLatin1String(", ")) + u')';
}

void printSignal(
    const FacilityEntry &entry, const QMetaMethod &signal, const QVariantList &arguments, bool asJson)
{
    const QDateTime now = QDateTime::currentDateTime();
    if (asJson) {
        QJsonArray values;
        for (const QVariant &argument : arguments)
            values.append(meta::valueJson(argument));
        printJson({{QStringLiteral("time"), now.toUTC().toString(Qt::ISODateWithMs)},
                      {QStringLiteral("facility"), entry.name},
                      {QStringLiteral("signal"), QLatin1String(signal.name())},
                      {QStringLiteral("signature"), QLatin1String(signal.methodSignature())},
                      {QStringLiteral("arguments"), values}},
            QJsonDocument::Compact);
        return;
    }
    printLine(painted(Paint::Dim, now.toString(QStringLiteral("HH:mm:ss.zzz"))) + QLatin1String("  ")
        + painted(Paint::Bold, entry.name) + QLatin1String("  ") + signalText(signal, arguments));
}

// The second form of a signal that carries an enumeration, with numbers in its place.
bool isNumericTwin(const QMetaMethod &signal)
{
    const QMetaObject *type = signal.enclosingMetaObject();
    for (int i = type->methodOffset(); i < signal.methodIndex(); ++i) {
        const QMetaMethod other = type->method(i);
        if (other.methodType() == QMetaMethod::Signal && other.name() == signal.name()
            && other.parameterCount() == signal.parameterCount())
            return true;
    }
    return false;
}

int watch(const Options &options)
{
    std::vector<std::unique_ptr<Instance>> instances;
    std::vector<std::unique_ptr<meta::SignalTap>> taps;
    bool available = true;
    int remaining = options.count;
    for (const FacilityEntry *entry : chosen(options)) {
        instances.push_back(std::make_unique<Instance>(*entry, options));
        available = instances.back()->reportUnavailable() && available;
        available = instances.back()->reportWarnings() && available;
        taps.push_back(std::make_unique<meta::SignalTap>(
            instances.back()->object(), [&, entry](const QMetaMethod &signal, const QVariantList &arguments) {
                if ((options.typed && isNumericTwin(signal)) || (options.count && remaining == 0))
                    return;
                printSignal(*entry, signal, arguments, options.json);
                if (options.count && --remaining == 0)
                    QCoreApplication::quit();
            }));
    }
    if (!available)
        return Unavailable;
    if (!options.duration.empty())
        QTimer::singleShot(
            milliseconds(QString::fromStdString(options.duration)), qApp, &QCoreApplication::quit);
    return QCoreApplication::exec();
}

// Says on a terminal that a call waits, where it takes longer than a person expects. The call blocks the
// thread, so another one has to.
class WaitingNotice
{
public:
    explicit WaitingNotice(const QString &what)
    {
        if (!::isatty(STDERR_FILENO))
            return;
        m_thread = std::jthread([text = what.toStdString()](const std::stop_token &ended) {
            std::mutex mutex;
            std::unique_lock lock(mutex);
            std::condition_variable_any().wait_for(
                lock, ended, std::chrono::milliseconds(500), [] { return false; });
            if (!ended.stop_requested())
                std::fprintf(
                    stderr, "ozdevice: %s waits for the service (Ctrl-C breaks it off)\n", text.c_str());
        });
    }

private:
    std::jthread m_thread;
};

// The signals that a call has put off until it has returned, such as the one that brings a session's key.
void printPostponedSignals(QObject *object)
{
    const meta::SignalTap tap(object, [](const QMetaMethod &signal, const QVariantList &arguments) {
        printLine(signalText(signal, arguments));
    });
    QCoreApplication::sendPostedEvents(object, QEvent::MetaCall);
}

int call(const Options &options)
{
    const FacilityEntry &entry = entryOf(QString::fromStdString(options.facility));
    const QString name = QString::fromStdString(options.member);
    QStringList words;
    for (const std::string &word : options.words)
        words.append(QString::fromStdString(word));
    QString problem;
    const auto method = meta::MethodCall::find(entry.type, name, words, &problem);
    if (!method)
        throw CommandError(WrongUse, entry.name + QLatin1String(": ") + problem);
    const Instance instance(entry, options);
    if (!instance.reportUnavailable() || !instance.reportWarnings())
        return Unavailable;
    QVariant result;
    {
        const WaitingNotice notice(entry.name + u' ' + name);
        result = method->invoke(instance.object());
    }
    if (result.isValid())
        printLine(meta::valueText(result));
    printPostponedSignals(instance.object());
    return Success;
}

int set(const Options &options)
{
    const FacilityEntry &entry = entryOf(QString::fromStdString(options.facility));
    const QString name = QString::fromStdString(options.member);
    const int index = entry.type->indexOfProperty(options.member.c_str());
    if (index < QObject::staticMetaObject.propertyCount()) {
        QStringList names;
        for (int i = QObject::staticMetaObject.propertyCount(); i < entry.type->propertyCount(); ++i)
            names.append(QLatin1String(entry.type->property(i).name()));
        throw CommandError(WrongUse,
            entry.name + QLatin1String(" has no property '") + name + QLatin1String("'; it has ")
                + enumerated(names));
    }
    const QMetaProperty property = entry.type->property(index);
    if (!property.isWritable())
        throw CommandError(WrongUse,
            entry.name + QLatin1String(": the property '") + name + QLatin1String("' is read-only"));
    if (options.words.size() != 1) {
        throw CommandError(WrongUse,
            entry.name + QLatin1String(": ") + name + QLatin1String(" takes one value, ")
                + meta::expectation(property.metaType()));
    }
    const QString text = QString::fromStdString(options.words.front());
    const auto value = meta::parseValue(text, property.metaType());
    if (!value) {
        throw CommandError(WrongUse,
            entry.name + QLatin1String(": ") + name + QLatin1String(" is ")
                + meta::expectation(property.metaType()) + QLatin1String(", not '") + text + u'\'');
    }
    const Instance instance(entry, options);
    if (!instance.reportUnavailable())
        return Unavailable;
    if (!property.write(instance.object(), *value))
        throw CommandError(Failed, entry.name + QLatin1String(": ") + name + QLatin1String(" was not set"));
    printLine(name + QLatin1String(" = ") + meta::valueText(property.read(instance.object())));
    return Success;
}

// The options that tell which display, network or profile is meant.
void addSelectors(CLI::App *verb, Options &options)
{
    for (const FacilityEntry &entry : facilityTable()) {
        if (entry.selector.isEmpty() || options.selected.contains(entry.selector))
            continue;
        verb->add_option("--" + entry.selector.toStdString(), options.selected[entry.selector],
            "Which " + entry.name.toStdString());
    }
}

} // namespace

void addFacilityCommands(CLI::App &parser, Action &action)
{
    Verbs<Options> verbs(parser, action);

    const auto [lister, listOptions] = verbs.add("list", "List the facilities", list);
    lister->add_flag("--names", listOptions->names, "Names only");

    const auto [shower, showOptions] =
        verbs.add("show", "Show every property of facilities, with its type", show);
    shower->add_option("FACILITY", showOptions->facilities, "Which ones (all)");
    shower->add_flag("--json", showOptions->json, "As JSON, enumerators by name");
    addSelectors(shower, *showOptions);

    const auto [watcher, watchOptions] =
        verbs.add("watch", "Print each signal of facilities as it comes", watch);
    watcher->add_option("FACILITY", watchOptions->facilities, "Which ones (all)");
    watcher->add_flag("--json", watchOptions->json, "One JSON object a line");
    watcher->add_flag(
        "--typed", watchOptions->typed, "Leave out the second, numeric form of enumeration signals");
    watcher->add_option("--count", watchOptions->count, "End after so many signals")
        ->check(CLI::PositiveNumber);
    watcher->add_option("--for", watchOptions->duration, "End after a time (10s, 500ms, 2m)");
    addSelectors(watcher, *watchOptions);

    const auto [caller, callOptions] =
        verbs.add("call", "Call a method of a facility and print what it returns", call);
    caller->add_option("FACILITY", callOptions->facility)->required();
    caller->add_option("METHOD", callOptions->member)->required();
    caller->add_option("ARGUMENT", callOptions->words, "Enumerators by name; a negative number after --");
    addSelectors(caller, *callOptions);

    const auto [setter, setOptions] = verbs.add("set", "Set a writable property of a facility", set);
    setter->add_option("FACILITY", setOptions->facility)->required();
    setter->add_option("PROPERTY", setOptions->member)->required();
    setter->add_option("VALUE", setOptions->words);
    addSelectors(setter, *setOptions);
}

} // namespace oz::tools
