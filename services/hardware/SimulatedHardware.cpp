#include "hardware/SimulatedHardware.hpp"

namespace oz::services {

namespace {

const QString Processors = QStringLiteral("processors");

std::optional<QVariant> seenName(const SeenValues &seen)
{
    const QVariant name = seen("name");
    return name.toString().isEmpty() ? std::nullopt : std::optional(name);
}

} // namespace

const Settings<SimulatedHardware> &SimulatedHardware::table()
{
    using H = Hardware;
    using C = SettingColumns<SimulatedHardware>;
    static const auto of = [](auto member) {
        return [member](auto &part) -> auto &
        {
            return part.m_state.*member;
        };
    };
    static const auto text = [](std::optional<QString> H::*member) { return C::text(of(member)); };
    static const Settings<SimulatedHardware> table{
        {"pin", text(&H::pin).asPrivate(), QStringLiteral("2A000001"), "the identifier of this device"},
        {"serial-number", text(&H::serialNumber).asPrivate(), QStringLiteral("000100020003"),
            "its serial number"},
        {"imei", text(&H::imei).asPrivate(), QStringLiteral("004999010640000"),
            "its identity in GSM, UMTS and LTE networks"},
        {"meid", text(&H::meid).asPrivate(), QStringLiteral("A0000000000001"),
            "its identity in CDMA networks"},
        {"hardware-id", text(&H::hardwareId), QStringLiteral("KSL100-1"),
            "the identifier of the hardware model; KSL100-1 to KSL100-4 have a trackpad and keys for phone, "
            "back and menu",
            {}, {"hardware-id"}},
        {"device-name", text(&H::deviceName), QStringLiteral("Simulated phone"),
            "the name that the user gave it", told("name", "TEXT", "gives the device a name"),
            {.value = seenName, .mask = "phone"}},
        {"model-name", text(&H::modelName), QStringLiteral("Kestrel"), "the name of the model", {},
            {"model"}},
        {"model-number", text(&H::modelNumber), QStringLiteral("KSL100"), "the number of the model", {},
            {"model-number"}},
        {"keyboard", text(&H::keyboard), QStringLiteral("qwerty"), "the kind of keyboard; none for none", {},
            {"keyboard"}},
        {"hdmi", C::words(of(&H::hdmi), hdmiWords()), QStringLiteral("micro"), "the kind of HDMI connector",
            {}, {"hdmi"}},
        {"miracast", C::truth(&SimulatedHardware::m_hasMiracast), true,
            "whether it supports wireless displays"},
    };
    return table;
}

SimulatedHardware::SimulatedHardware(const JsonNode &section, SimulatedParts &)
{
    read(section, settings({}), {Processors});
    readProcessors(section);
    update();
}

void SimulatedHardware::readProcessors(const JsonNode &section)
{
    QList<Hardware::Processor> all;
    if (!section.contains(Processors))
        all.fill({QStringLiteral("Simulated core"), 1500}, 2);
    for (const JsonNode &processor : section.maps(Processors)) {
        processor.allowOnly({QStringLiteral("model"), QStringLiteral("mhz")});
        all.append({processor.text(QStringLiteral("model"), {}),
            processor.integer(QStringLiteral("mhz"), 1500, 1, 100'000)});
    }
    m_state.processors = all;
}

void SimulatedHardware::update()
{
    save();
    know(m_state);
}

} // namespace oz::services
