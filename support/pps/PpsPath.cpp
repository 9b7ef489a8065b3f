#include "pps/PpsPath.hpp"

#include <oz/DeviceRoot.hpp>

#include <QFile>

namespace oz {

std::optional<PpsPath> PpsPath::parse(const QString &text)
{
    PpsPath path;
    const qsizetype question = text.indexOf(u'?');
    path.device = text.left(question);
    if (!path.device.startsWith(u'/') || path.device.contains(QChar(u'\0')))
        return std::nullopt;
    const auto components = QStringView(path.device).mid(1).split(u'/');
    for (const QStringView component : components) {
        if (component.isEmpty() || component.startsWith(u'.'))
            return std::nullopt;
    }
    path.name = QFile::encodeName(components.last().toString());
    if (question < 0)
        return path;
    for (const QString &option : text.mid(question + 1).split(u',')) {
        if (option == u"wait") {
            path.wait = true;
        } else if (option == u"delta") {
            path.delta = true;
        } else if (option.startsWith(u"f=")) {
            for (const QString &name : option.mid(2).split(u'+', Qt::SkipEmptyParts))
                path.filter.insert(name.toUtf8());
            if (path.filter.empty())
                return std::nullopt;
        } else {
            return std::nullopt;
        }
    }
    return path;
}

QByteArray PpsPath::filePath() const
{
    return QFile::encodeName(devicePath(device));
}

} // namespace oz
