// completion: the shell asks this program itself what can follow, so that new verbs and facilities complete
// at once.

#include "meta/MetaText.hpp"
#include "meta/MethodCall.hpp"
#include "ozdevice/Command.hpp"
#include "ozdevice/FacilityTable.hpp"
#include "ozdevice/PrivatePhone.hpp"

#include <oz/DeviceRoot.hpp>

#include <CLI/CLI.hpp>

#include <QDir>
#include <QMetaProperty>
#include <QVariantMap>

namespace oz::tools {

namespace {

constexpr const char *BashScript = R"bash(# bash completion for ozdevice
_ozdevice()
{
    local IFS=$'\n'
    COMPREPLY=($(compgen -W "$("${COMP_WORDS[0]}" complete -- "${COMP_WORDS[@]:1:COMP_CWORD}" 2>/dev/null)" \
        -- "${COMP_WORDS[COMP_CWORD]}"))
    [[ ${COMPREPLY[0]-} == *[/=] ]] && compopt -o nospace
    return 0
}
complete -o default -F _ozdevice ozdevice
)bash";

QStringList facilityNames()
{
    QStringList names;
    for (const FacilityEntry &entry : facilityTable())
        names.append(entry.name);
    return names;
}

const FacilityEntry *find(const QString &name)
{
    for (const FacilityEntry &entry : facilityTable()) {
        if (entry.name == name)
            return &entry;
    }
    return nullptr;
}

QStringList enumeratorsOf(QMetaType type)
{
    QStringList names;
    const QMetaEnum enumeration = meta::enumOf(type);
    for (int i = 0; enumeration.isValid() && i < enumeration.keyCount(); ++i)
        names.append(QLatin1String(enumeration.key(i)));
    return names;
}

QStringList treePaths(const QString &begun)
{
    const QString directory =
        begun.contains(u'/') ? begun.left(begun.lastIndexOf(u'/') + 1) : QStringLiteral("/pps/");
    const QString place =
        devicePath(directory.startsWith(u'/') ? directory : QString(QLatin1String("/pps/") + directory));
    QStringList paths;
    for (const QFileInfo &entry :
        QDir(place).entryInfoList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot))
        paths.append(directory + entry.fileName() + (entry.isDir() ? QStringLiteral("/") : QString()));
    return paths;
}

QStringList simWords(const QStringList &before)
{
    const QVariantMap parts =
        askDaemon(QStringLiteral("describe")).toMap().value(QStringLiteral("simulated")).toMap();
    if (before.isEmpty())
        return parts.keys();
    const QVariantMap part = parts.value(before.first()).toMap();
    QStringList instances = part.value(QStringLiteral("instances")).toStringList();
    if (before.size() == 1 && !instances.isEmpty())
        return instances;
    QStringList verbs;
    for (const QVariant &verb : part.value(QStringLiteral("verbs")).toList())
        verbs.append(verb.toMap().value(QStringLiteral("name")).toString());
    return before.size() == (instances.isEmpty() ? 1 : 2) ? verbs : QStringList();
}

QStringList writableProperties(const QMetaObject *type)
{
    QStringList names;
    for (int i = QObject::staticMetaObject.propertyCount(); i < type->propertyCount(); ++i) {
        if (type->property(i).isWritable())
            names.append(QLatin1String(type->property(i).name()));
    }
    return names;
}

// What can follow \a option, where that takes a value that is known here.
QStringList valuesOf(const QString &option, const QStringList &before)
{
    QStringList values;
    const FacilityEntry *called = find(before.value(0));
    if (option == u"--set" && called) {
        for (const QString &name : writableProperties(called->type))
            values.append(name + u'=');
        for (const QByteArray &name : called->dynamicProperties)
            values.append(QString(QLatin1String(name) + u'='));
    }
    for (const FacilityEntry &entry : facilityTable()) {
        if (entry.choices && option == QString(QLatin1String("--") + entry.selector))
            values = entry.choices();
    }
    return values;
}

// What can stand at the place of \a word, after the verb and the words \a before.
QStringList candidates(const QString &verb, const QStringList &before, const QString &word)
{
    if (verb == u"show" || verb == u"watch")
        return facilityNames();
    if (verb == u"call" || verb == u"set") {
        const FacilityEntry *entry = find(before.value(0));
        if (before.isEmpty() || !entry)
            return before.isEmpty() ? facilityNames() : QStringList();
        if (verb == u"call")
            return before.size() == 1 ? meta::MethodCall::namesOf(entry->type) : QStringList();
        QStringList names = writableProperties(entry->type);
        if (before.size() == 1)
            return names;
        if (const QString name = before.value(1); names.contains(name)) {
            const int index = entry->type->indexOfProperty(name.toLatin1().constData());
            return enumeratorsOf(entry->type->property(index).metaType());
        }
        return {};
    }
    if (verb == u"pps" && before.size() == 1)
        return treePaths(word);
    if (verb == u"sim")
        return simWords(before);
    return {};
}

} // namespace

void addCompletionCommands(CLI::App &parser, Action &action)
{
    CLI::App *completion = parser.add_subcommand("completion", "Print the completion script for bash");
    auto shell = std::make_shared<std::string>("bash");
    completion->add_option("SHELL", *shell)->check(CLI::IsMember({"bash"}))->default_str("bash");
    completion->callback([&action, shell] {
        action = [] {
            printLine(QString::fromLatin1(BashScript).chopped(1));
            return int(Success);
        };
    });

    CLI::App *complete = parser.add_subcommand("complete", "")->group("");
    auto words = std::make_shared<std::vector<std::string>>();
    complete->add_option("WORD", *words);
    complete->callback([&parser, &action, words] {
        words->insert(words->end(), wordsAfterDashes().begin(), wordsAfterDashes().end());
        action = [&parser, words] {
            const QString word = words->empty() ? QString() : QString::fromStdString(words->back());
            // The deepest verb that is there; what follows it are its words.
            const CLI::App *verb = &parser;
            QStringList before;
            for (std::size_t i = 0; i + 1 < words->size(); ++i) {
                const auto named = verb->get_subcommands(
                    [&](const CLI::App *sub) { return before.isEmpty() && sub->get_name() == (*words)[i]; });
                const CLI::App *next = named.empty() ? nullptr : named.front();
                if (next)
                    verb = next;
                else if ((*words)[i].rfind('-', 0) != 0)
                    before.append(QString::fromStdString((*words)[i]));
            }
            const QString previous =
                words->size() < 2 ? QString() : QString::fromStdString((*words)[words->size() - 2]);
            QStringList found = valuesOf(previous, before);
            if (!found.isEmpty()) {
                // nothing else can stand there
            } else if (word.startsWith(u'-')) {
                for (const CLI::Option *option : verb->get_options()) {
                    for (const std::string &name : option->get_lnames())
                        found.append(QString::fromStdString("--" + name));
                }
            } else {
                for (const CLI::App *sub :
                    verb->get_subcommands([](const CLI::App *app) { return !app->get_group().empty(); }))
                    found.append(QString::fromStdString(sub->get_name()));
                QString name = QString::fromStdString(verb->get_name());
                if (verb->get_parent() && verb->get_parent() != &parser) {
                    before.prepend(name);
                    name = QString::fromStdString(verb->get_parent()->get_name());
                }
                found += candidates(name, before, word);
            }
            for (const QString &candidate : found)
                printLine(candidate);
            return int(Success);
        };
    });
}

} // namespace oz::tools
