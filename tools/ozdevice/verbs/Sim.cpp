#include "facilities/FacilityTable.hpp"
#include "ozdevice/DaemonAccess.hpp"
#include "ozdevice/Output.hpp"
#include "ozdevice/Verbs.hpp"

namespace oz::tools {

namespace {

struct SimOptions
{
    std::vector<std::string> words;
};

QStringList verbsOf(const QVariant &part)
{
    QStringList verbs;
    for (const QVariant &verb : part.toMap().value(u"verbs"_s).toList())
        verbs.append(verb.toMap().value(u"name"_s).toString());
    return verbs;
}

// The part of the phone for \a word, which may be an alias, or a facility with several parts.
QString partOf(const QString &word, const QString &verb)
{
    const FacilityEntry *entry = findFacility(word);
    if (!entry || (entry->name == word && entry->daemonParts.isEmpty()))
        return word;
    const QVariantMap parts = simulatedParts();
    if (parts.contains(word))
        return word;
    QStringList known;
    for (const QString &part : entry->feedingParts()) {
        const QStringList verbs = verbsOf(parts.value(part));
        if (verbs.contains(verb) || entry->feedingParts().size() == 1)
            return part;
        known += verbs;
    }
    throw CommandError(WrongUse, unknownText(entry->name + " has no"_L1, verb, known));
}

void listParts()
{
    const QVariantMap parts = simulatedParts();
    for (auto part = parts.cbegin(); part != parts.cend(); ++part) {
        const QVariantMap described = part->toMap();
        QStringList begin{part.key()};
        if (described.contains(u"instances"_s)) {
            begin.append(u"NAME"_s);
            printLine(painted(Paint::Bold, begin.join(u' ').leftJustified(40)) + " NAME is "_L1
                + described.value(u"instances"_s).toStringList().join(u'|'));
        }
        for (const QVariant &verb : described.value(u"verbs"_s).toList()) {
            const QVariantMap entry = verb.toMap();
            const QStringList usage = begin + QStringList{entry.value(u"name"_s).toString()}
                + entry.value(u"arguments"_s).toStringList();
            printLine(painted(Paint::Bold, usage.join(u' ').leftJustified(40)) + u' '
                + entry.value(u"help"_s).toString());
        }
    }
}

int sim(const SimOptions &options)
{
    QStringList words = toStringList(options.words);
    if (words.isEmpty()) {
        listParts();
        return Success;
    }
    if (words.size() == 1)
        throw CommandError(WrongUse, "sim "_L1 + words[0] + " needs a verb; `ozdevice sim` lists them"_L1);
    const QString facility = words.takeFirst();
    const QString verb = words.takeFirst();
    (void)askDaemon(u"sim"_s,
        QVariantMap{{u"facility"_s, partOf(facility, verb)}, {u"verb"_s, verb}, {u"arguments"_s, words}});
    return Success;
}

} // namespace

void addSimVerb(const Verb &parser, Action &action)
{
    const auto [verb, options] =
        Verbs<SimOptions>(parser, action)
            .add("sim", "Change the simulated phone while it runs; without words, list the possible changes",
                sim);
    verb.option("FACILITY [NAME] VERB [ARGUMENT...]", options->words);
}

} // namespace oz::tools
