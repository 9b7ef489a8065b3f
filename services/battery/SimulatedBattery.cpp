#include "battery/SimulatedBattery.hpp"

namespace oz::services {

namespace {

constexpr double ColdestCharge = 0; // degrees Celsius
constexpr double HottestCharge = 45;

// A charger by wire is what is left of the chargers without the one that the receiver sees.
std::optional<QVariant> seenPlugged(const SeenValues &seen)
{
    const QVariant chargers = seen("chargers");
    const int wireless = seen("receiver").toString() == u"null" ? 0 : 1;
    return chargers.isValid() ? std::optional(QVariant(chargers.toInt() > wireless)) : std::nullopt;
}

std::optional<QVariant> seenReceiver(const SeenValues &seen)
{
    const QString receiver = seen("receiver").toString();
    return receiver.isEmpty() ? std::nullopt
                              : std::optional(QVariant(receiver == u"null" ? QString() : receiver));
}

// The temperature of a battery that is taken out is not unknown; it is not seen.
std::optional<QVariant> seenTemperature(const SeenValues &seen)
{
    return seen("present").toBool() ? std::optional(seen("temperature")) : std::nullopt;
}

} // namespace

const Settings<SimulatedBattery> &SimulatedBattery::table()
{
    using B = SimulatedBattery;
    using C = SettingColumns<SimulatedBattery>;
    static const Settings<SimulatedBattery> table{
        {"plugged", C::truth(&B::m_plugged), false, "whether a charger is connected by wire",
            either("plug", "connects a charger", "unplug", "disconnects the charger"),
            {.value = seenPlugged}},
        {"wireless-receiver", C::text(&B::m_receiver), QString(),
            "the receiver on a wireless charger; empty for none",
            told("wireless", "[RXID]", "lays the phone on a wireless charger, or takes it off"),
            {.value = seenReceiver, .mask = "receiver"}},
        {"level", C::number(&B::m_level, 0, 100, "%"), 80, "the charge",
            told("level", "PERCENT", "sets the charge"), {"level"}},
        {"condition", C::words(&B::m_condition, batteryConditions(), "unknown"), QStringLiteral("ok"),
            "its condition", told("condition", "ok|bad|unknown", "sets the condition"), {"condition"}},
        {"present", C::truth(&B::m_present), true, "whether there is a battery",
            either("insert", "puts the battery in", "remove", "takes the battery out"), {"present"}},
        {"held", C::truth(&B::m_isHeld), false, "whether the charge stays as it is, whatever the chargers do",
            onOff("hold", "keeps the charge as it is, or lets it move by itself"), {.fixed = true}},
        {"full-charge-capacity", C::number(&B::m_fullChargeCapacity, 1, 1'000'000, "mAh"), 2'800,
            "the charge that it holds when full", {}, {"full-charge-capacity"}},
        {"cycle-count", C::number(&B::m_cycleCount, 0, 1'000'000), 112,
            "how many times it was charged and discharged", {}, {"cycle-count"}},
        {"temperature", C::number(&B::m_temperature, -100, 200, "°C").offering(-20, 80, 0.5), 25.5,
            "its temperature; it charges from 0 to 45 only",
            told("temperature", "CELSIUS|unknown",
                "sets the temperature; the battery charges from 0 to 45 only"),
            {.value = seenTemperature}},
        {"charging-seconds-per-percent", C::seconds(&B::m_chargingPace, 0.001, 86'400), 60,
            "how long it takes to gain one percent"},
        {"discharging-seconds-per-percent", C::seconds(&B::m_dischargingPace, 0.001, 86'400), 600,
            "how long it takes to lose one percent"},
    };
    return table;
}

SimulatedBattery::SimulatedBattery(const JsonNode &section, SimulatedParts &phone)
    : m_timer(phone.clock(), PhoneTimer::Repeatedly)
{
    read(section, settings({}));
    connect(&m_timer, &PhoneTimer::timeout, this, [this] {
        m_level += m_step;
        update();
    });
    update();
}

bool SimulatedBattery::takesCharge() const
{
    return !m_temperature || (*m_temperature >= ColdestCharge && *m_temperature <= HottestCharge);
}

Battery::Charging SimulatedBattery::charging() const
{
    if (!m_present || chargers() == 0)
        return Battery::Charging::No;
    if (m_level == 100)
        return Battery::Charging::Full;
    return takesCharge() ? Battery::Charging::Yes : Battery::Charging::No;
}

int SimulatedBattery::step() const
{
    if (m_isHeld || !m_present)
        return 0;
    if (chargers() == 0)
        return m_level > 0 ? -1 : 0;
    return takesCharge() && m_level < 100 ? 1 : 0;
}

void SimulatedBattery::update()
{
    // A percent that has begun goes on while the direction stays.
    if (const int step = this->step(); step != m_step) {
        m_step = step;
        if (step == 0)
            m_timer.stop();
        else
            m_timer.start(step > 0 ? m_chargingPace : m_dischargingPace);
    }
    save();
    Battery battery;
    battery.present = m_present;
    battery.charging = charging();
    battery.chargers = chargers();
    battery.wirelessReceiver = m_receiver;
    if (m_present) {
        battery.level = m_level;
        battery.condition = m_condition;
        battery.fullChargeCapacity = m_fullChargeCapacity;
        battery.cycleCount = m_cycleCount;
        battery.temperature = m_temperature;
    }
    know(battery);
}

} // namespace oz::services
