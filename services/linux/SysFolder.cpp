#include "linux/SysFolder.hpp"

#include <QFile>

namespace oz::services::SysFolder {

std::optional<QString> readFile(const QString &name)
{
    constexpr qint64 Longest = 1 << 20;
    QFile file(name);
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    const QByteArray content = file.read(Longest);
    if (file.error() != QFile::NoError)
        return std::nullopt;
    // Texts in the device tree end in a zero byte, and there may be several.
    return QString::fromUtf8(content.split('\0').constFirst()).trimmed();
}

Values readFiles(const QString &folder, const QStringList &names)
{
    Values values;
    for (const QString &name : names) {
        if (const auto value = readFile(folder + u'/' + name))
            values.insert(name, *value);
    }
    return values;
}

std::optional<double> number(const Values &values, const QString &name)
{
    bool ok = false;
    const double number = values.value(name).toDouble(&ok);
    return ok ? std::optional(number) : std::nullopt;
}

} // namespace oz::services::SysFolder
