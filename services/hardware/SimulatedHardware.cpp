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
        {"pin", text(&H::pin).asPrivate(), QStringLiteral("2A000001"), "the identifiers of this one phone"},
        {"serial-number", text(&H::serialNumber).asPrivate(), QStringLiteral("000100020003"), ""},
        {"imei", text(&H::imei).asPrivate(), QStringLiteral("004999010640000"), ""},
        {"meid", text(&H::meid).asPrivate(), QStringLiteral("A0000000000001"), ""},
        {"hardware-id", text(&H::hardwareId), QStringLiteral("KSL100-1"),
            "KSL100-1 to KSL100-4 have a trackpad and keys for phone, back and menu", {}, {"hardware-id"}},
        {"device-name", text(&H::deviceName), QStringLiteral("Simulated phone"), "what the user calls it",
            told("name", "TEXT", "gives the device a name"), {.value = seenName, .mask = "phone"}},
        {"model-name", text(&H::modelName), QStringLiteral("Kestrel"), "", {}, {"model"}},
        {"model-number", text(&H::modelNumber), QStringLiteral("KSL100"), "", {}, {"model-number"}},
        {"keyboard", text(&H::keyboard), QStringLiteral("qwerty"), "none where there is no keyboard of keys",
            {}, {"keyboard"}},
        {"hdmi", C::words(of(&H::hdmi), hdmiWords()), QStringLiteral("micro"), "none or micro", {}, {"hdmi"}},
        {"miracast", C::truth(&SimulatedHardware::m_hasMiracast), true,
            "whether it can show its screen on wireless displays"},
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
