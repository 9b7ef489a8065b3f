#include "core/SimulatedPhone.hpp"

#include "sdcard/SimulatedSdCard.hpp"

namespace oz::services {

SimulatedPhone::SimulatedPhone(const JsonNode &file)
{
    m_parts.push_back(std::make_unique<SimulatedSdCard>(file.map(QStringLiteral("sdcard"))));

    QStringList names;
    for (const auto &part : m_parts)
        names.append(part->name());
    file.allowOnly(names);
}

SimulatedPhone::~SimulatedPhone() = default;

QString SimulatedPhone::run(const QString &name, const QString &verb, const QStringList &arguments)
{
    QStringList names;
    for (const auto &part : m_parts) {
        names.append(part->name());
        if (part->name() != name)
            continue;
        QStringList verbs;
        for (const SimVerb &known : part->verbs()) {
            verbs.append(known.name);
            if (known.name != verb)
                continue;
            const auto optional = std::count_if(known.arguments.begin(), known.arguments.end(),
                [](const QString &argument) { return argument.startsWith(u'['); });
            if (arguments.size() > known.arguments.size()
                || arguments.size() < known.arguments.size() - optional) {
                return name + u' ' + verb + QLatin1String(" takes ")
                    + (known.arguments.isEmpty() ? QStringLiteral("no arguments")
                                                 : known.arguments.join(u' '))
                    + QLatin1String(", not ") + QString::number(arguments.size())
                    + QLatin1String(" arguments");
            }
            return known.run(arguments);
        }
        return name + QLatin1String(" has no '") + verb + QLatin1String("'; it has ")
            + verbs.join(QLatin1String(", "));
    }
    return QLatin1String("the simulated phone has no '") + name + QLatin1String("'; it has ")
        + names.join(QLatin1String(", "));
}

QVariantMap SimulatedPhone::describe() const
{
    QVariantMap parts;
    for (const auto &part : m_parts) {
        QVariantList verbs;
        for (const SimVerb &verb : part->verbs()) {
            verbs.append(QVariantMap{{QStringLiteral("name"), verb.name},
                {QStringLiteral("arguments"), verb.arguments}, {QStringLiteral("help"), verb.help}});
        }
        parts.insert(part->name(), verbs);
    }
    return parts;
}

} // namespace oz::services
