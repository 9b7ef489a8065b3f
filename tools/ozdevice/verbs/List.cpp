#include "facilities/FacilityTable.hpp"
#include "ozdevice/Output.hpp"
#include "ozdevice/Verbs.hpp"

namespace oz::tools {

namespace {

struct ListOptions
{
    bool names = false;
};

int list(const ListOptions &options)
{
    QList<QStringList> rows;
    for (const FacilityEntry &entry : facilityTable()) {
        if (options.names) {
            printLine(entry.name);
            continue;
        }
        rows.append({entry.name, QString::fromLatin1(entry.type->className()).section(u':', -1),
            entry.help
                + (entry.selector.isEmpty() ? QString() : QString(" (--"_L1 + entry.selector + u')'))});
    }
    printRows(rows, {}, {Paint::Bold});
    return Success;
}

} // namespace

void addListVerb(const Verb &parser, Action &action)
{
    const auto [verb, options] = Verbs<ListOptions>(parser, action).add("list", "List the facilities", list);
    verb.flag("--names", options->names, "Names only");
}

} // namespace oz::tools
