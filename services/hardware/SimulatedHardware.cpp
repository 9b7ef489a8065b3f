#include "hardware/SimulatedHardware.hpp"

namespace oz::services {

SimulatedHardware::SimulatedHardware(const JsonNode &section, SimulatedPhone &)
{
    const struct
    {
        QString key;
        QString fallback;
        std::optional<QString> State::*field;
    } texts[] = {
        {QStringLiteral("pin"), QStringLiteral("2A000001"), &State::pin},
        {QStringLiteral("serial-number"), QStringLiteral("000100020003"), &State::serialNumber},
        {QStringLiteral("imei"), QStringLiteral("004999010640000"), &State::imei},
        {QStringLiteral("meid"), QStringLiteral("A0000000000001"), &State::meid},
        {QStringLiteral("hardware-id"), QStringLiteral("KSL100-1"), &State::hardwareId},
        {QStringLiteral("device-name"), QStringLiteral("Simulated phone"), &State::deviceName},
        {QStringLiteral("model-name"), QStringLiteral("Kestrel"), &State::modelName},
        {QStringLiteral("model-number"), QStringLiteral("KSL100"), &State::modelNumber},
        {QStringLiteral("keyboard"), QStringLiteral("qwerty"), &State::keyboard},
    };
    const QString processors = QStringLiteral("processors");
    const QString hdmi = QStringLiteral("hdmi");
    const QString miracast = QStringLiteral("miracast");
    QStringList known;
    for (const auto &text : texts) {
        known.append(text.key);
        m_state.*text.field = section.identifier(text.key, text.fallback);
    }
    section.allowOnly(known + QStringList{processors, hdmi, miracast});

    using Processor = HardwareState::Processor;
    QList<Processor> all(2, {QStringLiteral("Simulated core"), 1500});
    if (section.contains(processors))
        all.clear();
    for (const JsonNode &processor : section.maps(processors)) {
        processor.allowOnly({QStringLiteral("model"), QStringLiteral("mhz")});
        all.append({processor.text(QStringLiteral("model"), {}),
            processor.integer(QStringLiteral("mhz"), 1500, 1, 100'000)});
    }
    m_state.processors = all;
    if (!section.isNull(hdmi)) {
        const QString connector =
            section.word(hdmi, QStringLiteral("micro"), {QStringLiteral("none"), QStringLiteral("micro")});
        m_state.hdmi = connector == u"micro" ? HardwareState::Hdmi::Micro : HardwareState::Hdmi::None;
    }
    m_hasMiracast = section.boolean(miracast, true);
    know(m_state);
}

std::vector<SimVerb> SimulatedHardware::verbs(const QString &)
{
    return {SimVerb{QStringLiteral("name"), {QStringLiteral("TEXT")},
        QStringLiteral("gives the device a name"), [this](const QStringList &words) {
            m_state.deviceName = words[0];
            save();
            know(m_state);
        }}.with([this] { return m_state.deviceName.value_or(QString()); })};
}

QVariantMap SimulatedHardware::saved() const
{
    return {{QStringLiteral("name"), m_state.deviceName.value_or(QString())}};
}

void SimulatedHardware::restore(const QVariantMap &saved)
{
    if (const QString name = saved.value(QStringLiteral("name")).toString(); !name.isEmpty())
        m_state.deviceName = name;
    know(m_state);
}

} // namespace oz::services
