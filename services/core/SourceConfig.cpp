#include "core/SourceConfig.hpp"

#include "core/Error.hpp"
#include "core/Facilities.hpp"

#include <QFile>
#include <QStringList>

namespace oz::services {

SourceConfig SourceConfig::parseFile(const QString &file)
{
    QFile input(file);
    if (!input.open(QIODevice::ReadOnly))
        throw Error(file + QLatin1String(": ") + input.errorString());
    SourceConfig config;
    for (int number = 1; !input.atEnd(); ++number) {
        const QString line = QString::fromUtf8(input.readLine()).section(u'#', 0, 0).trimmed();
        if (line.isEmpty())
            continue;
        const QString place = file + u':' + QString::number(number) + QLatin1String(": ");
        const QString key = line.section(u'=', 0, 0).trimmed();
        const QString value = line.section(u'=', 1).trimmed();
        if (key.isEmpty() || value.isEmpty())
            throw Error(place + QLatin1String("expected 'FACILITY = SOURCE', found '") + line + u'\'');
        if (key == u"phone") {
            config.phoneFile = value;
            continue;
        }
        try {
            config.setSource(key, value);
        } catch (const Error &error) {
            throw Error(place + QString::fromUtf8(error.what()));
        }
    }
    return config;
}

QString SourceConfig::sourceOf(const QString &facility) const
{
    return m_sources.value(facility, QLatin1String(Simulated));
}

void SourceConfig::setSource(const QString &facility, const QString &source)
{
    QStringList names;
    for (const Facility &known : facilities()) {
        names.append(known.name);
        if (known.name != facility)
            continue;
        if (!known.sources.contains(source)) {
            throw Error(facility + QLatin1String(" has no source '") + source + QLatin1String("'; it has ")
                + QStringList(known.sources.keys()).join(QLatin1String(", ")));
        }
        m_sources.insert(facility, source);
        return;
    }
    throw Error(QLatin1String("unknown facility '") + facility + QLatin1String("'; known are ")
        + names.join(QLatin1String(", ")));
}

} // namespace oz::services
