#include "daemon/Configuration.hpp"

#include "source/Error.hpp"

#include <oz/PrintableText.hpp>

#include <QFile>
#include <QRegularExpression>
#include <QStringList>

#include <grp.h>

namespace oz::services {

namespace {

// As it can be shown on any terminal.
QString shown(const QString &text)
{
    return printableText(text.left(200));
}

QStringList sourceNamesOf(const Facility &facility)
{
    QStringList names;
    for (const SourceKind &kind : facility.sources)
        names.append(kind.name);
    return names + QStringList{SourceChoice::Auto, SourceChoice::None};
}

SourceOptions optionsOf(const QStringList &words, const Facility &facility, const QString &source)
{
    QStringList known;
    for (const SourceKind &kind : facility.sources) {
        if (kind.name == source)
            known = kind.options;
    }
    SourceOptions options;
    for (const QString &word : words) {
        const QString name = word.section(u'=', 0, 0);
        if (word.endsWith(u'=')) {
            throw Error(facility.name + QLatin1String(" = ") + source + QLatin1String(": the option '")
                + shown(word) + QLatin1String("' wants a value"));
        }
        if (!known.contains(name) || !word.contains(u'=')) {
            throw Error(facility.name + QLatin1String(" = ") + source + QLatin1String(" has no option '")
                + shown(word) + QLatin1String("'; ")
                + (known.isEmpty()
                        ? QStringLiteral("it has none")
                        : QString(QLatin1String("it has ") + known.join(QLatin1String("=, ")) + u'=')));
        }
        if (options.contains(name))
            throw Error(QLatin1String("the option '") + name + QLatin1String("' stands twice"));
        options.insert(name, word.section(u'=', 1));
    }
    return options;
}

} // namespace

const Facility *findFacility(const QString &name)
{
    for (const Facility &facility : facilities()) {
        if (facility.name == name || QString(facility.name).remove(u'-') == name)
            return &facility;
    }
    return nullptr;
}

Configuration Configuration::parseFile(const QString &file)
{
    QFile input(file);
    if (!input.open(QIODevice::ReadOnly))
        throw Error(file + QLatin1String(": ") + input.errorString());
    Configuration config;
    QMap<QString, int> lines; // where each key stands
    for (int number = 1; !input.atEnd(); ++number) {
        const QString line = QString::fromUtf8(input.readLine()).section(u'#', 0, 0).trimmed();
        if (line.isEmpty())
            continue;
        const QString place = file + u':' + QString::number(number) + QLatin1String(": ");
        QString key = line.section(u'=', 0, 0).trimmed();
        const QString value = line.section(u'=', 1).trimmed();
        if (key.isEmpty() || value.isEmpty())
            throw Error(place + QLatin1String("expected 'FACILITY = SOURCE', found '") + shown(line) + u'\'');
        if (const Facility *facility = findFacility(key))
            key = facility->name;
        if (const int first = std::exchange(lines[key], number)) {
            throw Error(place + QLatin1String("'") + shown(key)
                + QLatin1String("' stands twice, first in line ") + QString::number(first));
        }
        try {
            if (key == u"phone")
                config.phoneFile = value;
            else if (key == u"trusted-group")
                config.setTrustedGroup(value);
            else
                config.choose(key, value);
        } catch (const Error &error) {
            throw Error(place + error.text());
        }
    }
    return config;
}

Configuration Configuration::simulated()
{
    Configuration config;
    config.simulateAll();
    return config;
}

SourceChoice Configuration::choiceOf(const QString &facility) const
{
    return m_choices.value(facility, SourceChoice{m_default, {}});
}

void Configuration::simulateAll()
{
    m_choices.clear();
    m_default = SimulatedSource;
}

void Configuration::choose(const QString &facility, const QString &choice)
{
    const Facility *found = findFacility(facility);
    if (!found) {
        QStringList names;
        for (const Facility &known : facilities())
            names.append(known.name);
        throw Error(QLatin1String("unknown facility '") + shown(facility) + QLatin1String("'; known are ")
            + names.join(QLatin1String(", ")));
    }
    static const QRegularExpression blanks(QStringLiteral("\\s+"));
    QStringList words = choice.split(blanks, Qt::SkipEmptyParts);
    const QString source = words.isEmpty() ? QString() : words.takeFirst();
    if (const QStringList names = sourceNamesOf(*found); !names.contains(source)) {
        throw Error(found->name + QLatin1String(" has no source '") + shown(source)
            + QLatin1String("'; it has ") + names.join(QLatin1String(", ")));
    }
    m_choices.insert(found->name, {source, optionsOf(words, *found, source)});
}

void Configuration::setTrustedGroup(const QString &name)
{
    const group *entry = ::getgrnam(name.toLocal8Bit().constData());
    if (!entry)
        throw Error(QLatin1String("there is no group '") + shown(name) + u'\'');
    trustedGroup = entry->gr_gid;
}

} // namespace oz::services
