#include "ozdevice/DeviceReport.hpp"

#include "facilities/CommandError.hpp"
#include "ozdevice/Output.hpp"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSysInfo>

#include <iterator>
#include <link.h>

namespace oz::tools {

namespace {

const QString Note = u"note"_s;
const QString Facilities = u"facilities"_s;
const QString Problems = u"problems"_s;

// What runs, in the order of the file.
constexpr const char *SystemKeys[] = {
    "ozdevice", "libozdevice", "ozdeviced", "qt", "distribution", "kernel", "architecture"};

// The version of the library that this process has loaded, which may be another one than this program's.
QString libraryVersion()
{
    QString version;
    const auto look = [](dl_phdr_info *info, size_t, void *found) {
        const QFileInfo file(QFile::decodeName(info->dlpi_name));
        if (!file.fileName().startsWith("libozdevice.so"_L1))
            return 0;
        *static_cast<QString *>(found) = file.canonicalFilePath().section(".so."_L1, 1);
        return 1;
    };
    ::dl_iterate_phdr(look, &version);
    return version;
}

QString jsonOf(const QJsonValue &value)
{
    const QByteArray list = QJsonDocument(QJsonArray{value}).toJson(QJsonDocument::Compact);
    return QString::fromUtf8(list.sliced(1).chopped(1));
}

QJsonObject jsonOf(const SourceState &source)
{
    QJsonObject json{{u"source"_s, source.source}, {u"state"_s, source.state}};
    if (source.isAutomatic)
        json.insert(u"auto"_s, true);
    if (!source.reason.isEmpty())
        json.insert(u"reason"_s, source.reason);
    if (!source.instances.isEmpty())
        json.insert(u"instances"_s, QJsonArray::fromStringList(source.instances));
    return json;
}

QString member(const QString &key, const QString &value)
{
    return jsonOf(key) + ": "_L1 + value;
}

QString enclosed(const QStringList &members, QLatin1StringView brackets, int depth)
{
    if (members.isEmpty())
        return brackets;
    const QString indentation = u'\n' + QString(qsizetype(depth) * 4, u' ');
    return brackets.first(1) + indentation + "    "_L1 + members.join(u',' + indentation + "    "_L1)
        + indentation + brackets.last(1);
}

} // namespace

DeviceReport describeDevice(const QString &note)
{
    const QString texts[] = {QCoreApplication::applicationVersion(), libraryVersion(),
        askDaemon(u"describe"_s).toMap().value(u"version"_s).toString(), QString::fromLatin1(qVersion()),
        QSysInfo::prettyProductName(), QSysInfo::kernelType() + u' ' + QSysInfo::kernelVersion(),
        QSysInfo::currentCpuArchitecture()};
    static_assert(std::size(texts) == std::size(SystemKeys));
    DeviceReport report{note, {}, diagnose(daemonState())};
    for (std::size_t i = 0; i < std::size(texts); ++i)
        report.system.append({QLatin1String(SystemKeys[i]), texts[i]});
    return report;
}

void maskReport(DeviceReport &report, const std::function<QStringList(const QStringList &texts)> &mask)
{
    QList<QString *> places{&report.note};
    for (SourceState &source : report.diagnosis.sources) {
        places.append(&source.reason);
        for (QString &instance : source.instances)
            places.append(&instance);
    }
    for (QString &problem : report.diagnosis.problems)
        places.append(&problem);
    QStringList texts;
    for (const QString *place : places)
        texts.append(*place);
    const QStringList masked = mask(texts);
    if (masked.size() != places.size())
        throw CommandError(Failed, u"the services cannot mask a report; they are of another version"_s);
    for (qsizetype i = 0; i < places.size(); ++i)
        *places[i] = masked[i];
}

QString reportJson(const DeviceReport &report)
{
    QStringList members;
    if (!report.note.isEmpty())
        members.append(member(Note, jsonOf(report.note)));
    for (const auto &[key, text] : report.system)
        members.append(member(key, jsonOf(text)));
    QStringList facilities;
    for (const SourceState &source : report.diagnosis.sources)
        facilities.append(member(source.facility, jsonOf(jsonOf(source))));
    members.append(member(Facilities, enclosed(facilities, "{}"_L1, 2)));
    QStringList problems;
    for (const QString &problem : report.diagnosis.problems)
        problems.append(jsonOf(problem));
    members.append(member(Problems, enclosed(problems, "[]"_L1, 2)));
    return enclosed(members, "{}"_L1, 1);
}

DeviceReport reportFrom(const QVariantMap &value)
{
    DeviceReport report{value.value(Note).toString(), {}, {}};
    for (const char *key : SystemKeys)
        report.system.append({QLatin1String(key), value.value(QLatin1String(key)).toString()});
    const QVariantMap facilities = value.value(Facilities).toMap();
    for (auto facility = facilities.cbegin(); facility != facilities.cend(); ++facility) {
        const QVariantMap source = facility->toMap();
        report.diagnosis.sources.push_back({facility.key(), source.value(u"source"_s).toString(),
            source.value(u"state"_s).toString(), source.value(u"reason"_s).toString(),
            source.value(u"auto"_s).toBool(), source.value(u"instances"_s).toStringList()});
    }
    report.diagnosis.problems = value.value(Problems).toStringList();
    return report;
}

void printReport(const DeviceReport &report)
{
    QList<QStringList> rows;
    for (const auto &[key, text] : report.system)
        rows.append({key, text.isEmpty() ? u"unknown"_s : text});
    printRows(rows, {}, {Paint::Bold});
    printLine({});
    if (!report.diagnosis.sources.empty())
        printSources(report.diagnosis.sources);
    for (const QString &problem : report.diagnosis.problems)
        printLine(problem);
    if (report.diagnosis.problems.isEmpty())
        printLine(u"doctor found nothing wrong"_s);
}

} // namespace oz::tools
