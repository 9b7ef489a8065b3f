// list, show, watch, call and set: everything that works over the meta-objects of the facilities.

#include "meta/MetaText.hpp"
#include "meta/MethodCall.hpp"
#include "meta/SignalTap.hpp"
#include "ozdevice/CounterTable.hpp"
#include "ozdevice/FacilityTable.hpp"
#include "ozdevice/LastingCall.hpp"
#include "ozdevice/Verbs.hpp"

#include <oz/PpsObject.hpp>

#include <QCoreApplication>
#include <QDateTime>
#include <QDeadlineTimer>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QMetaProperty>
#include <QThread>
#include <QTimer>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <csignal>
#include <cstdio>
#include <map>
#include <mutex>
#include <thread>
#include <unistd.h>

namespace oz::tools {

namespace {

constexpr int FirstValuesDeadline = 300; // milliseconds; an orientation may be undefined

struct Options
{
    std::vector<std::string> facilities;
    std::string facility;
    std::string member;
    std::vector<std::string> words;
    std::vector<std::string> sets;
    std::map<QString, std::string> selected;
    bool json = false;
    bool names = false;
    bool typed = false;
    int count = 0;
    std::string duration;
    std::string every = "1s";
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

// What the options select of a facility's several; empty for nothing.
QString selectedOf(const FacilityEntry &entry, const Options &options)
{
    const auto selected = options.selected.find(entry.selector);
    return selected == options.selected.end() ? QString() : QString::fromStdString(selected->second);
}

// Whether a facility stands for nothing, as something has to be selected and is not.
bool lacksSelection(const FacilityEntry &entry, const Options &options)
{
    return entry.choices && selectedOf(entry, options).isEmpty();
}

// An instance of a facility that lives as long as the command looks at it.
class Instance
{
public:
    Instance(const FacilityEntry &entry, const Options &options) : m_entry(entry)
    {
        const QString selected = selectedOf(entry, options);
        const QStringList choices = entry.choices ? entry.choices() : QStringList();
        if (entry.choices && !selected.isEmpty() && !choices.contains(selected)) {
            throw CommandError(Unavailable,
                entry.name + QLatin1String(": there is no ") + entry.selector + QLatin1String(" '") + selected
                    + QLatin1String("'; there is ") + enumerated(choices));
        }
        m_object = entry.make(selected);
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

    // The same of a facility that has opened no object, or none that can be found, once it was made or asked:
    // it has warned.
    [[nodiscard]] bool reportWarnings() const
    {
        const auto wasOpened = [](const PpsObject *pps) { return pps->isOpen() || pps->error() != 0; };
        const auto objects = m_object->findChildren<PpsObject *>();
        if (std::none_of(objects.cbegin(), objects.cend(), wasOpened))
            return reportAllWarnings();
        (void)takeLibraryWarnings();
        return true;
    }

    [[nodiscard]] bool reportAllWarnings() const
    {
        bool none = true;
        for (const QString &warning : takeLibraryWarnings())
            none = report(warning);
        return none;
    }

    // Says that the device does not have the facility, where it has opened none of its objects; whether it
    // has.
    [[nodiscard]] bool reportUnsupported() const
    {
        const auto objects = m_object->findChildren<PpsObject *>();
        return std::any_of(objects.cbegin(), objects.cend(), [](const auto *pps) { return pps->isOpen(); })
            || report(QStringLiteral("the device does not support it"));
    }

private:
    // Says it; false.
    [[nodiscard]] bool report(const QString &problem) const
    {
        std::fprintf(stderr, "ozdevice: %s\n", qUtf8Printable(unavailableText(m_entry.name, problem)));
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
        if (lacksSelection(*entry, options)) {
            const QStringList choices = entry->choices();
            all.insert(entry->name,
                QJsonObject{{QStringLiteral("choices"),
                    QJsonObject{{entry->selector, QJsonArray::fromStringList(choices)}}}});
            if (!options.json) {
                printLine(painted(Paint::Bold, entry->name) + QLatin1String("\n  --") + entry->selector
                    + QLatin1String(" is one of ") + choices.join(QLatin1String(", ")));
            }
            continue;
        }
        const Instance instance(*entry, options);
        available = instance.reportUnavailable() && available;
        if (entry->readAnew)
            entry->readAnew(instance.object());
        const QDeadlineTimer patience(FirstValuesDeadline);
        while (entry->isComplete && !entry->isComplete(instance.object()) && !patience.hasExpired()) {
            QCoreApplication::processEvents();
            QThread::msleep(1);
        }
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

// Begins a line about something that happens now.
QString beginning(const FacilityEntry &entry)
{
    const QString now = QDateTime::currentDateTime().toString(QStringLiteral("HH:mm:ss.zzz"));
    return painted(Paint::Dim, now) + QLatin1String("  ") + painted(Paint::Bold, entry.name)
        + QLatin1String("  ");
}

QJsonObject jsonBeginning(const FacilityEntry &entry)
{
    return {{QStringLiteral("time"), QDateTime::currentDateTimeUtc().toString(Qt::ISODateWithMs)},
        {QStringLiteral("facility"), entry.name}};
}

void printSignal(
    const FacilityEntry &entry, const QMetaMethod &signal, const QVariantList &arguments, bool asJson)
{
    if (asJson) {
        QJsonArray values;
        for (const QVariant &argument : arguments)
            values.append(meta::valueJson(argument));
        QJsonObject line = jsonBeginning(entry);
        line.insert(QStringLiteral("signal"), QLatin1String(signal.name()));
        line.insert(QStringLiteral("signature"), QLatin1String(signal.methodSignature()));
        line.insert(QStringLiteral("arguments"), values);
        printJson(line, QJsonDocument::Compact);
        return;
    }
    printLine(beginning(entry) + signalText(signal, arguments));
}

// What changed in an object of the tree.
void printChange(const FacilityEntry &entry, const PpsObject &object, const QVariantMap &changed, bool asJson)
{
    const QString path = object.path().section(u'?', 0, 0);
    if (asJson) {
        QJsonObject line = jsonBeginning(entry);
        line.insert(QStringLiteral("object"), path);
        line.insert(QStringLiteral("changed"), meta::valueJson(changed));
        printJson(line, QJsonDocument::Compact);
        return;
    }
    QStringList texts;
    for (auto attribute = changed.cbegin(); attribute != changed.cend(); ++attribute) {
        // One that is gone is written as in the tree.
        texts.append(attribute->isValid()
                ? QString(attribute.key() + u'=' + painted(Paint::Value, meta::valueText(*attribute)))
                : QString(u'-' + attribute.key()));
    }
    printLine(beginning(entry) + path.section(u'/', -1) + QLatin1String(": ") + texts.join(u' '));
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

// Prints what happens to facilities until it is enough.
class Watch
{
public:
    explicit Watch(const Options &options) : m_options(options), m_remaining(options.count) { }

    // Begins to watch a facility; false, after saying why, where it is not there.
    bool add(const FacilityEntry &entry)
    {
        m_instances.push_back(std::make_unique<Instance>(entry, m_options));
        const Instance &instance = *m_instances.back();
        if (entry.readAnew) {
            addCounters(instance);
            return true;
        }
        m_taps.push_back(std::make_unique<meta::SignalTap>(
            instance.object(), [this, &entry](const QMetaMethod &signal, const QVariantList &arguments) {
                if (!(m_options.typed && isNumericTwin(signal)))
                    tell([&] { printSignal(entry, signal, arguments, m_options.json); });
            }));
        bool available = instance.reportUnavailable();
        available = instance.reportWarnings() && available;
        for (const QString &path : entry.activity)
            available = addObject(entry, path) && available;
        return available;
    }

    [[nodiscard]] int run()
    {
        if (!m_options.duration.empty())
            QTimer::singleShot(
                milliseconds(QString::fromStdString(m_options.duration)), qApp, &QCoreApplication::quit);
        const int status = QCoreApplication::exec();
        if (m_problem)
            throw CommandError(*m_problem);
        return status;
    }

private:
    void tell(const std::function<void()> &print)
    {
        if (m_options.count && m_remaining == 0)
            return;
        print();
        if (m_options.count && --m_remaining == 0)
            QCoreApplication::quit();
    }

    void addCounters(const Instance &instance)
    {
        const FacilityEntry &entry = instance.entry();
        const int interval = milliseconds(QString::fromStdString(m_options.every));
        if (interval == 0)
            throw CommandError(WrongUse, QStringLiteral("--every is a time longer than 0"));
        m_tables.push_back(std::make_unique<CounterTable>(
            entry, instance.object(), selectedOf(entry, m_options), m_options.json));
        auto *timer = m_timers.emplace_back(std::make_unique<QTimer>()).get();
        timer->setTimerType(Qt::PreciseTimer);
        QObject::connect(timer, &QTimer::timeout, [this, table = m_tables.back().get()] {
            try {
                tell([&] { table->printNext(); });
            } catch (const CommandError &error) { // which is not for the event loop
                m_problem = error;
                QCoreApplication::quit();
            }
        });
        timer->start(interval);
    }

    bool addObject(const FacilityEntry &entry, const QString &path)
    {
        auto *object =
            m_objects.emplace_back(std::make_unique<PpsObject>(path + QLatin1String("?delta"))).get();
        const bool opened = object->open(PpsOpenMode::Subscribe);
        if (!opened) {
            std::fprintf(stderr, "ozdevice: %s\n",
                qUtf8Printable(
                    unavailableText(entry.name, path + QLatin1String(": ") + object->errorString())));
            return false;
        }
        (void)object->read(); // as it is now is no change
        QObject::connect(object, &PpsObject::readyRead, [this, &entry, object] {
            const QVariantMap message = PpsObject::decode(object->read());
            if (!message.isEmpty())
                tell([&] { printChange(entry, *object, message.first().toMap(), m_options.json); });
        });
        return true;
    }

    const Options &m_options;
    int m_remaining;
    std::optional<CommandError> m_problem;
    std::vector<std::unique_ptr<Instance>> m_instances;
    std::vector<std::unique_ptr<meta::SignalTap>> m_taps;
    std::vector<std::unique_ptr<PpsObject>> m_objects;
    std::vector<std::unique_ptr<CounterTable>> m_tables;
    std::vector<std::unique_ptr<QTimer>> m_timers;
};

int watch(const Options &options)
{
    Watch watch(options);
    bool available = true;
    for (const FacilityEntry *entry : chosen(options)) {
        if (!lacksSelection(*entry, options)) {
            available = watch.add(*entry) && available;
        } else if (!options.facilities.empty()) {
            throw CommandError(WrongUse,
                entry->name + QLatin1String(": which one? --") + entry->selector
                    + QLatin1String(" is one of ") + entry->choices().join(QLatin1String(", ")));
        }
    }
    return available ? watch.run() : Unavailable;
}

// A writable property of a facility, and the value that it shall have.
class Setting
{
public:
    Setting(const FacilityEntry &entry, const QString &name, const std::optional<QString> &text)
    {
        if (text && entry.dynamicProperties.contains(name.toUtf8())) {
            m_name = name.toUtf8();
            m_value = *text;
            return;
        }
        const QMetaObject *type = entry.type;
        const int index = type->indexOfProperty(name.toUtf8().constData());
        if (index < QObject::staticMetaObject.propertyCount()) {
            QStringList names;
            for (int i = QObject::staticMetaObject.propertyCount(); i < type->propertyCount(); ++i)
                names.append(QLatin1String(type->property(i).name()));
            throw CommandError(WrongUse,
                entry.name + QLatin1String(" has no property '") + name + QLatin1String("'; it has ")
                    + enumerated(names));
        }
        m_property = type->property(index);
        if (!m_property.isWritable())
            throw CommandError(WrongUse,
                entry.name + QLatin1String(": the property '") + name + QLatin1String("' is read-only"));
        const QString expected = meta::expectation(m_property.metaType());
        if (!text) {
            throw CommandError(WrongUse,
                entry.name + QLatin1String(": ") + name + QLatin1String(" takes one value, ") + expected);
        }
        const auto value = meta::parseValue(*text, m_property.metaType());
        if (!value) {
            throw CommandError(WrongUse,
                entry.name + QLatin1String(": ") + name + QLatin1String(" is ") + expected
                    + QLatin1String(", not '") + *text + u'\'');
        }
        m_value = *value;
    }

    void applyTo(const Instance &instance) const
    {
        if (!m_name.isEmpty()) {
            instance.object()->setProperty(m_name.constData(), m_value);
        } else if (!m_property.write(instance.object(), m_value)) {
            throw CommandError(Failed,
                instance.entry().name + QLatin1String(": ") + QLatin1String(m_property.name())
                    + QLatin1String(" was not set"));
        }
    }

private:
    QMetaProperty m_property;
    QByteArray m_name; // of a dynamic property
    QVariant m_value;
};

// Says on a terminal that a call waits, where it takes longer than a person expects. The call blocks the
// thread, so another one has to.
class WaitingNotice
{
public:
    explicit WaitingNotice(const QString &what)
    {
        if (!::isatty(STDERR_FILENO))
            return;
        // Signals are for the thread that calls, which may take them through its event loop.
        sigset_t all;
        sigset_t before;
        sigfillset(&all);
        pthread_sigmask(SIG_SETMASK, &all, &before);
        m_thread = std::jthread([text = what.toStdString()](const std::stop_token &ended) {
            std::mutex mutex;
            std::unique_lock lock(mutex);
            std::condition_variable_any().wait_for(
                lock, ended, std::chrono::milliseconds(500), [] { return false; });
            if (!ended.stop_requested())
                std::fprintf(
                    stderr, "ozdevice: %s waits for the service (Ctrl-C breaks it off)\n", text.c_str());
        });
        pthread_sigmask(SIG_SETMASK, &before, nullptr);
    }

private:
    std::jthread m_thread;
};

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
    std::vector<Setting> settings;
    for (const std::string &set : options.sets) {
        const QString text = QString::fromStdString(set);
        const std::optional<QString> value =
            text.contains(u'=') ? std::optional(text.section(u'=', 1)) : std::nullopt;
        settings.emplace_back(entry, text.section(u'=', 0, 0), value);
    }
    const Instance instance(entry, options);
    if (!instance.reportUnavailable() || !instance.reportWarnings())
        return Unavailable;
    const bool isAnswered = entry.answers.contains(name.toLatin1());
    if (isAnswered && !instance.reportUnsupported())
        return Unavailable;
    LastingCall lasting(
        entry, name, instance.object(), [](const QMetaMethod &signal, const QVariantList &arguments) {
            if (!isNumericTwin(signal))
                printLine(signalText(signal, arguments));
        });
    for (const Setting &setting : settings)
        setting.applyTo(instance);
    std::optional<WaitingNotice> notice(entry.name + u' ' + name);
    const QVariant result = method->invoke(instance.object());
    if (!isAnswered)
        notice.reset();
    if (result.isValid())
        printLine(meta::valueText(result));
    // No answer follows a request that could not be sent, of which there is only a warning.
    const bool wasSent = isAnswered ? instance.reportAllWarnings() : instance.reportWarnings();
    return wasSent ? lasting.waitForEnd() : Unavailable;
}

int set(const Options &options)
{
    const FacilityEntry &entry = entryOf(QString::fromStdString(options.facility));
    const QString name = QString::fromStdString(options.member);
    const Setting setting(entry, name,
        options.words.size() == 1 ? std::optional(QString::fromStdString(options.words.front()))
                                  : std::nullopt);
    const Instance instance(entry, options);
    if (!instance.reportUnavailable())
        return Unavailable;
    setting.applyTo(instance);
    printLine(
        name + QLatin1String(" = ") + meta::valueText(instance.object()->property(options.member.c_str())));
    std::fprintf(stderr,
        "ozdevice: %s belongs to this one object, which is gone now; a call of one that has it is "
        "ozdevice call %s METHOD --set %s=VALUE\n",
        options.member.c_str(), options.facility.c_str(), options.member.c_str());
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
    watcher->add_option("--every", watchOptions->every, "How often to read counters")->default_str("1s");
    watcher->add_option("--count", watchOptions->count, "End after so many lines")
        ->check(CLI::PositiveNumber);
    watcher->add_option("--for", watchOptions->duration, "End after a time (10s, 500ms, 2m)");
    addSelectors(watcher, *watchOptions);

    const auto [caller, callOptions] =
        verbs.add("call", "Call a method of a facility and print what it returns", call);
    caller->add_option("FACILITY", callOptions->facility)->required();
    caller->add_option("METHOD", callOptions->member)->required();
    caller->add_option("ARGUMENT", callOptions->words, "Enumerators by name; a negative number after --");
    caller->add_option("--set", callOptions->sets, "Set a writable property of the object first, repeatable")
        ->type_name("PROPERTY=VALUE")
        ->expected(1)
        ->take_all();
    caller->footer(
        "Where a call goes on after it returned, as flashing does, the command waits until it has ended.\n"
        "Where a signal answers it later, as Miracast's requests, it waits for that, prints the signals "
        "until\n"
        "then, and fails where the answer is not Success.");
    addSelectors(caller, *callOptions);

    const auto [setter, setOptions] = verbs.add("set", "Set a writable property of a facility", set);
    setter->add_option("FACILITY", setOptions->facility)->required();
    setter->add_option("PROPERTY", setOptions->member)->required();
    setter->add_option("VALUE", setOptions->words);
    addSelectors(setter, *setOptions);
}

} // namespace oz::tools
