#include "orientation/SimulatedOrientation.hpp"

namespace oz::services {

SimulatedOrientation::SimulatedOrientation(const JsonNode &section)
{
    section.allowOnly({QStringLiteral("orientation")});
    m_orientation = section.word(QStringLiteral("orientation"), orientations().constFirst(), orientations());
}

std::vector<SimVerb> SimulatedOrientation::verbs(const QString &)
{
    std::vector<SimVerb> verbs;
    for (const QString &orientation : orientations()) {
        const QString help = orientation == u"undefined"
            ? QStringLiteral("holds the phone so that its sensor cannot tell how")
            : QString(QLatin1String("holds the phone ") + orientation);
        verbs.push_back({orientation, {}, help, [this, orientation](const QStringList &) {
                             m_orientation = orientation;
                             Q_EMIT changed();
                         }});
    }
    return verbs;
}

} // namespace oz::services
