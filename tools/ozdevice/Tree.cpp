#include "ozdevice/Tree.hpp"

#include <oz/DeviceRoot.hpp>

#include <QDateTime>
#include <QDirIterator>
#include <QFileInfo>

#include <algorithm>

namespace oz::tools {

std::vector<ObjectAge> objectAges()
{
    const QString tree = devicePath(QStringLiteral("/pps"));
    std::vector<ObjectAge> objects;
    // Names that begin with a dot are no objects.
    QDirIterator entries(
        tree, QDir::Files | QDir::System | QDir::NoDotAndDotDot, QDirIterator::Subdirectories);
    while (entries.hasNext()) {
        const QString path = QLatin1String("/pps") + entries.next().sliced(tree.size());
        objects.push_back({path, ageOf(path)});
    }
    std::sort(objects.begin(), objects.end(),
        [](const ObjectAge &a, const ObjectAge &b) { return a.path < b.path; });
    return objects;
}

std::optional<std::chrono::seconds> ageOf(const QString &path)
{
    const QFileInfo file(devicePath(path));
    if (!file.isFile())
        return std::nullopt;
    return std::chrono::seconds(
        std::max<qint64>(file.lastModified().secsTo(QDateTime::currentDateTime()), 0));
}

QString ageText(std::chrono::seconds age)
{
    const qint64 seconds = age.count();
    if (seconds < 120)
        return QString::number(seconds) + QLatin1String(" s");
    if (seconds < 7200)
        return QString::number(seconds / 60) + QLatin1String(" min");
    if (seconds < 172'800)
        return QString::number(seconds / 3600) + QLatin1String(" h");
    return QString::number(seconds / 86'400) + QLatin1String(" days");
}

QString ppsPath(const QString &word)
{
    return word.startsWith(u'/') ? word : QString(QLatin1String("/pps/") + word);
}

} // namespace oz::tools
