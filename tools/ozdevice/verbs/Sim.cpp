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

QVariantMap simulatedParts()
{
    return askDaemon(QStringLiteral("describe")).toMap().value(QStringLiteral("simulated")).toMap();
}

QStringList verbsOf(const QVariant &part)
{
    QStringList verbs;
    for (const QVariant &verb : part.toMap().value(QStringLiteral("verbs")).toList())
        verbs.append(verb.toMap().value(QStringLiteral("name")).toString());
    return verbs;
}

// The part of the phone that \a word means, which may be an older spelling, or a facility with several parts.
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
    throw CommandError(WrongUse, unknownText(entry->name + QLatin1String(" has no"), verb, known));
}

void listParts()
{
    const QVariantMap parts = simulatedParts();
    for (auto part = parts.cbegin(); part != parts.cend(); ++part) {
        const QVariantMap described = part->toMap();
        QStringList begin{part.key()};
        if (described.contains(QStringLiteral("instances"))) {
            begin.append(QStringLiteral("NAME"));
            printLine(painted(Paint::Bold, begin.join(u' ').leftJustified(40)) + QLatin1String(" NAME is ")
                + described.value(QStringLiteral("instances")).toStringList().join(u'|'));
        }
        for (const QVariant &verb : described.value(QStringLiteral("verbs")).toList()) {
            const QVariantMap entry = verb.toMap();
            const QStringList usage = begin + QStringList{entry.value(QStringLiteral("name")).toString()}
                + entry.value(QStringLiteral("arguments")).toStringList();
            printLine(painted(Paint::Bold, usage.join(u' ').leftJustified(40)) + u' '
                + entry.value(QStringLiteral("help")).toString());
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
        throw CommandError(WrongUse,
            QLatin1String("sim ") + words[0] + QLatin1String(" wants a verb; `ozdevice sim` lists them"));
    const QString facility = words.takeFirst();
    const QString verb = words.takeFirst();
    (void)askDaemon(QStringLiteral("sim"),
        QVariantMap{{QStringLiteral("facility"), partOf(facility, verb)}, {QStringLiteral("verb"), verb},
            {QStringLiteral("arguments"), words}});
    return Success;
}

} // namespace

void addSimVerb(const Verb &parser, Action &action)
{
    const auto [verb, options] =
        Verbs<SimOptions>(parser, action)
            .add("sim", "Change the simulated phone while it runs; without words, list what it can be told",
                sim);
    verb.option("FACILITY [NAME] VERB [ARGUMENT...]", options->words);
}

} // namespace oz::tools
