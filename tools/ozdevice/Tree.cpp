#include "ozdevice/Tree.hpp"

#include <oz/DeviceRoot.hpp>

#include <QDateTime>
#include <QDirIterator>
#include <QFileInfo>

#include <algorithm>

namespace oz::tools {

using namespace Qt::StringLiterals;

std::vector<ObjectAge> objectAges()
{
    const QString tree = devicePath(u"/pps"_s);
    std::vector<ObjectAge> objects;
    // The filter leaves out names that begin with a dot, which are no objects.
    QDirIterator entries(
        tree, QDir::Files | QDir::System | QDir::NoDotAndDotDot, QDirIterator::Subdirectories);
    while (entries.hasNext()) {
        const QString path = "/pps"_L1 + entries.next().sliced(tree.size());
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
        return QString::number(seconds) + " s"_L1;
    if (seconds < 7200)
        return QString::number(seconds / 60) + " min"_L1;
    if (seconds < 172'800)
        return QString::number(seconds / 3600) + " h"_L1;
    return QString::number(seconds / 86'400) + " days"_L1;
}

QString ppsPath(const QString &word)
{
    return word.startsWith(u'/') ? word : QString("/pps/"_L1 + word);
}

} // namespace oz::tools
