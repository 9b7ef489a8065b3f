// The shells ask this program for candidates, so new verbs and facilities complete without new scripts.

#include "facilities/FacilityTable.hpp"
#include "meta/MetaDescription.hpp"
#include "meta/MethodCall.hpp"
#include "ozdevice/DaemonAccess.hpp"
#include "ozdevice/Output.hpp"
#include "ozdevice/PlayedScenario.hpp"
#include "ozdevice/PropertySetting.hpp"
#include "ozdevice/Tree.hpp"
#include "ozdevice/Verbs.hpp"

#include <oz/DeviceRoot.hpp>
#include <oz/PpsObject.hpp>

#include <QDir>
#include <QVariantMap>

#include <algorithm>

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

constexpr const char *ZshScript = R"zsh(#compdef ozdevice
# zsh completion for ozdevice
_ozdevice()
{
    local -a found
    found=("${(@f)$(${words[1]} complete -- "${(@)words[2,CURRENT]}" 2>/dev/null)}")
    found=(${found:#})
    if (( ${#found} == 0 )); then
        _files
        return
    fi
    compadd -S '' -- ${(M)found:#*[/=]}
    compadd -- ${found:#*[/=]}
}
if [[ ${funcstack[1]} == _ozdevice ]]; then
    _ozdevice "$@"
else
    compdef _ozdevice ozdevice
fi
)zsh";

constexpr const char *FishScript = R"fish(# fish completion for ozdevice
function __ozdevice_candidates
    set -l words (commandline -opc)
    set -l program $words[1]
    set -e words[1]
    $program complete -- $words (commandline -ct) 2>/dev/null
end
complete -c ozdevice -f -n 'test -n "$(__ozdevice_candidates)"' -a '(__ozdevice_candidates)'
)fish";

// The words of a command line before the completed one, without the verb.
struct Before
{
    QStringList words;
    const FacilityEntry *facility = nullptr; // the first word, if it is a facility
};

// The names of facilities, and aliases only if no name begins with \a word.
QStringList facilitiesLike(const QString &word)
{
    QStringList names = facilityNames();
    const auto begins = [&](const QString &name) { return name.startsWith(word); };
    if (std::any_of(names.cbegin(), names.cend(), begins))
        return names;
    for (const FacilityEntry &entry : facilityTable())
        names += entry.aliases;
    return names;
}

// The entries of the directory that \a begun is in.
QStringList treePaths(const QString &begun)
{
    const QString directory = begun.contains(u'/') ? begun.left(begun.lastIndexOf(u'/') + 1) : u"/pps/"_s;
    QStringList paths;
    for (const QFileInfo &entry : QDir(devicePath(ppsPath(directory)))
                                      .entryInfoList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot))
        paths.append(directory + entry.fileName() + (entry.isDir() ? u"/"_s : QString()));
    return paths;
}

QStringList attributesOf(const QString &path)
{
    PpsObject object(ppsPath(path));
    if (!QFileInfo(devicePath(ppsPath(path))).isFile() || !object.open(PpsOpenMode::Subscribe))
        return {};
    const QVariantMap message = PpsObject::decode(object.read());
    return message.isEmpty() ? QStringList() : message.first().toMap().keys();
}

// The words for an argument of a described verb of the phone.
QStringList simArguments(const QVariantMap &verb, qsizetype index)
{
    QStringList found;
    const QString argument = verb.value(u"arguments"_s).toStringList().value(index);
    // In "on|off" and "CELSIUS|unknown", capitals are placeholders.
    for (const QString &word : argument.split(u'|')) {
        if (word == word.toLower())
            found.append(word);
    }
    const QVariantMap choices = verb.value(u"choices"_s).toMap();
    return found + choices.value(argument).toMap().value(u"words"_s).toStringList();
}

QStringList simWords(const QStringList &before)
{
    const QVariantMap parts = simulatedParts();
    if (before.isEmpty())
        return parts.keys();
    const FacilityEntry *entry = findFacility(before.first());
    QStringList names{before.first()};
    if (!parts.contains(names.first()) && entry)
        names = entry->feedingParts();
    QStringList found;
    for (const QString &name : names) {
        const QVariantMap part = parts.value(name).toMap();
        const QStringList instances = part.value(u"instances"_s).toStringList();
        const qsizetype verbAt = instances.isEmpty() ? 1 : 2;
        if (before.size() < verbAt)
            return instances;
        for (const QVariant &described : part.value(u"verbs"_s).toList()) {
            const QVariantMap verb = described.toMap();
            const QString verbName = verb.value(u"name"_s).toString();
            if (before.size() == verbAt) {
                found.append(verbName);
            } else if (before[verbAt] == verbName) {
                found += simArguments(verb, before.size() - verbAt - 1);
            }
        }
    }
    return found;
}

// The enumerators for an argument of a method.
QStringList argumentWords(const FacilityEntry &entry, const QString &method, int index)
{
    QStringList words;
    for (const QMetaMethod &candidate : meta::methodsOf(entry.type)) {
        if (QLatin1String(candidate.name()) == method && index < candidate.parameterCount())
            words += meta::enumeratorsOf(candidate.parameterMetaType(index));
    }
    words.removeDuplicates();
    return words;
}

QStringList scenarioNames()
{
    QStringList names;
    for (const QStringList &row : installedScenarios())
        names.append(row.first());
    return names;
}

// The values of \a option, if they are known here.
QStringList valuesOf(const QString &option, const Before &before)
{
    QStringList values;
    if (option == u"--scenario")
        values = scenarioNames();
    if (option == u"--wait-for")
        values = {u"open"_s, u"request"_s, u"none"_s};
    if (option == u"--only")
        values = askDaemon(u"describe"_s).toMap().value(u"recordable"_s).toStringList();
    if (option == u"--set" && before.facility) {
        for (const QString &name : PropertySetting::namesOf(*before.facility))
            values.append(name + u'=');
    }
    for (const FacilityEntry &entry : facilityTable()) {
        if (entry.instances && option == QString("--"_L1 + entry.selector))
            values = entry.instances();
    }
    return values;
}

// The candidates for \a word, after the verb and the words before.
QStringList candidates(const QString &verb, const Before &before, const QString &word)
{
    const qsizetype place = before.words.size();
    if (verb == u"show" || verb == u"watch" || verb == u"describe" || verb == u"top")
        return facilitiesLike(word);
    if ((verb == u"call" || verb == u"set") && place == 0)
        return facilitiesLike(word);
    if (verb == u"call" && before.facility) {
        return place == 1 ? meta::MethodCall::namesOf(before.facility->type)
                          : argumentWords(*before.facility, before.words[1], int(place) - 2);
    }
    if (verb == u"set" && before.facility) {
        if (place == 1)
            return PropertySetting::namesOf(*before.facility);
        const QMetaObject *type = before.facility->type;
        return meta::enumeratorsOf(
            type->property(type->indexOfProperty(before.words[1].toLatin1().constData())).metaType());
    }
    if (verb == u"sim")
        return simWords(before.words);
    if (verb == u"completion")
        return {u"bash"_s, u"zsh"_s, u"fish"_s};
    return verb == u"play" ? scenarioNames() : QStringList();
}

QStringList ppsCandidates(const QString &verb, const Before &before, const QString &word)
{
    if (before.words.isEmpty())
        return treePaths(word);
    const bool namesAttributes = verb == u"get" || verb == u"rm";
    return namesAttributes ? attributesOf(before.words.first()) : QStringList();
}

// The candidates for the last of \a words.
QStringList complete(const Verb &program, const std::vector<std::string> &words)
{
    if (words.empty())
        return {};
    const QString word = QString::fromStdString(words.back());
    // Find the deepest verb; the words after it are its own.
    Verb verb = program;
    int depth = 0;
    Before before;
    std::string option; // the option whose value is next
    for (std::size_t i = 0; i + 1 < words.size(); ++i) {
        const std::string &one = words[i];
        if (!std::exchange(option, {}).empty())
            continue;
        const std::vector<Verb> verbs = verb.verbs();
        const auto named = std::find_if(verbs.cbegin(), verbs.cend(),
            [&](const Verb &below) { return before.words.isEmpty() && below.name() == one; });
        if (named != verbs.cend()) {
            verb = *named;
            ++depth;
        } else if (one.rfind('-', 0) != 0) {
            before.words.append(QString::fromStdString(one));
        } else if (verb.takesValue(one)) {
            option = one;
        }
    }
    before.facility = findFacility(before.words.value(0));
    if (!option.empty())
        return valuesOf(QString::fromStdString(option), before);
    if (word.startsWith(u'-'))
        return toStringList(verb.longOptions());
    QStringList found;
    for (const Verb &below : verb.verbs()) {
        if (!below.isHidden())
            found.append(QString::fromStdString(below.name()));
    }
    const QString name = QString::fromStdString(verb.name());
    const bool isOfPps = depth > 1;
    return found + (isOfPps ? ppsCandidates(name, before, word) : candidates(name, before, word));
}

} // namespace

void addCompletionVerbs(const Verb &parser, Action &action)
{
    static const std::map<std::string, const char *> scripts{
        {"bash", BashScript}, {"zsh", ZshScript}, {"fish", FishScript}};
    const Verb completion = parser.add("completion", "Print the completion script for bash, zsh or fish");
    auto shell = std::make_shared<std::string>("bash");
    completion.option("SHELL", *shell).oneOf({"bash", "zsh", "fish"});
    completion.whenCalled([&action, shell](const std::vector<std::string> &) {
        action = [shell] {
            printLines(QString::fromLatin1(scripts.at(*shell)).chopped(1));
            return int(Success);
        };
    });

    const Verb completer = parser.add("complete", "");
    completer.hide();
    auto words = std::make_shared<std::vector<std::string>>();
    completer.option("WORD", *words);
    completer.whenCalled([parser, &action, words](const std::vector<std::string> &) {
        words->insert(words->end(), wordsAfterDashes().begin(), wordsAfterDashes().end());
        action = [parser, words] {
            for (const QString &candidate : complete(parser, *words))
                printLine(candidate);
            return int(Success);
        };
    });
}

} // namespace oz::tools
