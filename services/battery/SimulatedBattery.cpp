#include "battery/SimulatedBattery.hpp"

#include "publishing/Error.hpp"

namespace oz::services {

namespace {

constexpr double ColdestCharge = 0; // degrees Celsius
constexpr double HottestCharge = 45;

using Charging = BatteryState::Charging;
using Condition = BatteryState::Condition;

// "unknown", and then in the order of Condition.
QStringList conditionWords()
{
    return {QStringLiteral("unknown"), QStringLiteral("ok"), QStringLiteral("bad")};
}

std::optional<Condition> conditionOf(qsizetype place)
{
    return place < 1 ? std::nullopt : std::optional(Condition(place - 1));
}

std::chrono::milliseconds paceIn(const JsonNode &section, const QString &key, double fallback)
{
    return section.seconds(key, fallback, 0.001, 86'400);
}

} // namespace

SimulatedBattery::SimulatedBattery(const JsonNode &section, SimulatedPhone &phone)
    : m_timer(phone.clock(), PhoneTimer::Repeatedly)
{
    const QString temperature = QStringLiteral("temperature");
    section.allowOnly({QStringLiteral("level"), QStringLiteral("plugged"),
        QStringLiteral("wireless-receiver"), QStringLiteral("present"), QStringLiteral("condition"),
        QStringLiteral("full-charge-capacity"), QStringLiteral("cycle-count"), temperature,
        QStringLiteral("charging-seconds-per-percent"), QStringLiteral("discharging-seconds-per-percent")});
    m_level = section.integer(QStringLiteral("level"), 80, 0, 100);
    m_plugged = section.boolean(QStringLiteral("plugged"), false);
    m_receiver = section.text(QStringLiteral("wireless-receiver"), {});
    m_present = section.boolean(QStringLiteral("present"), true);
    m_battery.condition = conditionOf(conditionWords().indexOf(
        section.word(QStringLiteral("condition"), QStringLiteral("ok"), conditionWords())));
    m_battery.fullChargeCapacity =
        section.integer(QStringLiteral("full-charge-capacity"), 2'800, 1, 1'000'000);
    m_battery.cycleCount = section.integer(QStringLiteral("cycle-count"), 112, 0, 1'000'000);
    if (!section.isNull(temperature))
        m_battery.temperature = section.number(temperature, 25.5, -100, 200);
    m_chargingPace = paceIn(section, QStringLiteral("charging-seconds-per-percent"), 60);
    m_dischargingPace = paceIn(section, QStringLiteral("discharging-seconds-per-percent"), 600);

    connect(&m_timer, &PhoneTimer::timeout, this, [this] {
        m_level += m_step;
        update();
    });
    update();
}

std::vector<SimVerb> SimulatedBattery::verbs(const QString &)
{
    // A verb that changes something and lets the battery go on from there.
    const auto verb = [this](const QString &name, const QStringList &arguments, const QString &help,
                          const std::function<void(const QStringList &)> &change) {
        return SimVerb{name, arguments, help, [this, change](const QStringList &words) {
                           change(words);
                           update();
                       }};
    };
    // One that makes something of it true or false.
    const auto state = [this](const QString &name, const QString &help, bool *what, bool value) {
        return SimVerb::state(
            name, help,
            [this, what, value] {
                *what = value;
                update();
            },
            [what, value] { return *what == value; });
    };
    const QString unknown = QStringLiteral("unknown");
    const QString celsius = QStringLiteral("CELSIUS|unknown");
    return {
        state(QStringLiteral("plug"), QStringLiteral("connects a charger"), &m_plugged, true),
        state(QStringLiteral("unplug"), QStringLiteral("disconnects the charger"), &m_plugged, false),
        verb(QStringLiteral("wireless"), {QStringLiteral("[RXID]")},
            QStringLiteral("lays the phone on a wireless charger, or takes it from there"),
            [this](const QStringList &words) { m_receiver = words.value(0); })
            .with([this] { return m_receiver; }),
        verb(QStringLiteral("level"), {QStringLiteral("PERCENT")}, QStringLiteral("sets the charge"),
            [this](const QStringList &words) { m_level = SimArgument::integer(words[0], 0, 100); })
            .with([this] { return QString::number(m_level); },
                {{QStringLiteral("PERCENT"), {{}, 0, 100, 1, QStringLiteral("%")}}}),
        verb(QStringLiteral("temperature"), {celsius},
            QStringLiteral("sets the temperature; it takes charge from 0 to 45 only"),
            [this](const QStringList &words) {
                m_battery.temperature = words[0] == u"unknown"
                    ? std::nullopt
                    : std::optional(SimArgument::number(words[0], -100, 200));
            })
            .with(
                [this, unknown] {
                    return m_battery.temperature ? QString::number(*m_battery.temperature) : unknown;
                },
                {{celsius, {{unknown}, -20, 80, 0.5, QStringLiteral("°C")}}}),
        verb(QStringLiteral("condition"), {QStringLiteral("ok|bad|unknown")},
            QStringLiteral("sets the condition"),
            [this](const QStringList &words) {
                m_battery.condition = conditionOf(SimArgument::oneOf(words[0], conditionWords()));
            })
            .with(
                [this] { return conditionWords()[m_battery.condition ? int(*m_battery.condition) + 1 : 0]; }),
        SimVerb::onOff(
            QStringLiteral("hold"), QStringLiteral("keeps the charge as it is, or lets it move by itself"),
            [this](bool on) {
                m_isHeld = on;
                update();
            },
            [this] { return m_isHeld; }),
        state(QStringLiteral("remove"), QStringLiteral("takes the battery out"), &m_present, false),
        state(QStringLiteral("insert"), QStringLiteral("puts the battery in"), &m_present, true),
    };
}

// What the phone's file says stays: capacity, cycles and paces.
QVariantMap SimulatedBattery::saved() const
{
    QVariantMap saved{{QStringLiteral("level"), m_level}, {QStringLiteral("present"), m_present},
        {QStringLiteral("plugged"), m_plugged}, {QStringLiteral("held"), m_isHeld},
        {QStringLiteral("receiver"), m_receiver},
        {QStringLiteral("condition"), m_battery.condition ? int(*m_battery.condition) + 1 : 0}};
    if (m_battery.temperature)
        saved.insert(QStringLiteral("temperature"), *m_battery.temperature);
    return saved;
}

void SimulatedBattery::restore(const QVariantMap &saved)
{
    m_level = std::clamp(saved.value(QStringLiteral("level")).toInt(), 0, 100);
    m_present = saved.value(QStringLiteral("present")).toBool();
    m_plugged = saved.value(QStringLiteral("plugged")).toBool();
    m_isHeld = saved.value(QStringLiteral("held")).toBool();
    m_receiver = saved.value(QStringLiteral("receiver")).toString();
    m_battery.condition = conditionOf(std::clamp(saved.value(QStringLiteral("condition")).toInt(), 0, 2));
    m_battery.temperature.reset();
    if (const QVariant temperature = saved.value(QStringLiteral("temperature")); temperature.isValid())
        m_battery.temperature = temperature.toDouble();
    update();
}

bool SimulatedBattery::takesCharge() const
{
    const auto &temperature = m_battery.temperature;
    return !temperature || (*temperature >= ColdestCharge && *temperature <= HottestCharge);
}

Charging SimulatedBattery::charging() const
{
    if (!m_present || chargers() == 0)
        return Charging::No;
    if (m_level == 100)
        return Charging::Full;
    return takesCharge() ? Charging::Yes : Charging::No;
}

void SimulatedBattery::update()
{
    int step = 0;
    if (m_isHeld)
        step = 0;
    else if (m_present && chargers() == 0)
        step = m_level > 0 ? -1 : 0;
    else if (m_present && takesCharge())
        step = m_level < 100 ? 1 : 0;
    // A percent that has begun goes on while the direction stays.
    if (step != m_step) {
        m_step = step;
        if (step == 0)
            m_timer.stop();
        else
            m_timer.start(step > 0 ? m_chargingPace : m_dischargingPace);
    }
    save();
    m_battery.level = m_level;
    know({charging(), chargers(), m_present ? std::optional(m_battery) : std::nullopt, m_receiver});
}

} // namespace oz::services
