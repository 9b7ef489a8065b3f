#include "device/SimulatedOrientation.hpp"

namespace oz::services {

namespace {

const QString Key = QStringLiteral("orientation");

// In the order of Orientation.
const QStringList &words()
{
    static const QStringList all{QStringLiteral("top-up"), QStringLiteral("bottom-up"),
        QStringLiteral("left-up"), QStringLiteral("right-up"), QStringLiteral("face-up"),
        QStringLiteral("face-down"), QStringLiteral("undefined")};
    return all;
}

} // namespace

SimulatedOrientation::SimulatedOrientation(const JsonNode &section, SimulatedPhone &)
    : m_orientation(Orientation(words().indexOf(section.word(Key, words().constFirst(), words()))))
{
    section.allowOnly({Key});
    become(m_orientation);
}

std::vector<SimVerb> SimulatedOrientation::verbs(const QString &)
{
    std::vector<SimVerb> verbs;
    for (const QString &word : words()) {
        const auto orientation = Orientation(words().indexOf(word));
        const QString help = orientation == Orientation::Undefined
            ? QStringLiteral("holds the phone so that its sensor cannot tell how")
            : QString(QLatin1String("holds the phone ") + word);
        verbs.push_back(SimVerb::state(
            word, help, [this, orientation] { become(orientation); },
            [this, orientation] { return m_orientation == orientation; }));
    }
    return verbs;
}

QVariantMap SimulatedOrientation::saved() const
{
    return {{Key, words()[int(m_orientation)]}};
}

void SimulatedOrientation::restore(const QVariantMap &saved)
{
    if (const auto place = words().indexOf(saved.value(Key).toString()); place >= 0)
        become(Orientation(place));
}

void SimulatedOrientation::become(Orientation orientation)
{
    m_orientation = orientation;
    save();
    know({orientation});
}

} // namespace oz::services
