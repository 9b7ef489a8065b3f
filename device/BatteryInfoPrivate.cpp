#include "BatteryInfoPrivate.hpp"

#include "NamedValue.hpp"
#include "PpsReading.hpp"

#include <oz/PpsObject.hpp>

namespace oz::device {

namespace {

using Values = BatteryInfoPrivate::Values;

constexpr int MissingInteger = BatteryInfoPrivate::MissingInteger;

const QString PpsPath = QStringLiteral("/pps/system/BattMgr/status");

constexpr LogText OpenFailed{"[BatteryInfo] Unable to open battery manager PPS channel"};
constexpr ReadTexts Reading{{"[BatteryInfo] Could not read pps. error:", LogText::ErrorString},
    {"[BatteryInfo] Could read, but not decode pps"}};

// "NC" is not among them: it depends on the charger.
constexpr NamedValue<BatteryChargingState::Type> ChargingStates[] = {
    {"DC", BatteryChargingState::Full},
    {"TC", BatteryChargingState::Charging},
    {"CV", BatteryChargingState::Charging},
    {"CC", BatteryChargingState::Charging},
};

constexpr NamedValue<BatteryCondition::Type> Conditions[] = {
    {"OK", BatteryCondition::OK},
    {"BAD", BatteryCondition::Bad},
};

using Changes = ChangeTable<Change<Fields<&Values::level, &Values::chargingState>,
                                qOverload<int, BatteryChargingState::Type>(&BatteryInfo::levelChanged),
                                qOverload<int, int>(&BatteryInfo::levelChanged)>,
    Change<Fields<&Values::present>, &BatteryInfo::presentChanged>,
    Change<Fields<&Values::condition>, qOverload<BatteryCondition::Type>(&BatteryInfo::conditionChanged),
        qOverload<int>(&BatteryInfo::conditionChanged)>,
    Change<Fields<&Values::fullChargeCapacity>, &BatteryInfo::fullChargeCapacityChanged>,
    Change<Fields<&Values::cycleCount>, &BatteryInfo::cycleCountChanged>,
    Change<Fields<&Values::degrees>, &BatteryInfo::temperatureChanged>,
    Change<Fields<&Values::rxid>, &BatteryInfo::rxidChanged>>;

BatteryChargingState::Type chargingStateOf(const QVariantMap &status)
{
    const QString text =
        memberOf(status, QStringLiteral("SystemInfo"), QStringLiteral("ChargingState")).toString();
    if (text == QLatin1String("NC")) {
        bool ok = false;
        const int sources =
            memberOf(status, QStringLiteral("ChargerInfo"), QStringLiteral("NumOfSource")).toInt(&ok);
        return ok && sources < 1 ? BatteryChargingState::Discharging : BatteryChargingState::NotCharging;
    }
    const auto state = valueNamed(ChargingStates, text);
    if (!state)
        qCWarning(logDevice) << "[BatteryInfo] Could not find ChargingState in SystemInfo";
    return state.value_or(BatteryChargingState::Unknown);
}

// The status of the active battery; empty where the list does not have it, nothing where none is active.
std::optional<QVariantMap> activeBatteryOf(const QVariantMap &status)
{
    const QVariantMap batteries = status.value(QStringLiteral("BatteryInfo")).toMap();
    bool ok = false;
    const int active = batteries.value(QStringLiteral("ActiveBattery")).toInt(&ok);
    if (!ok) {
        qCWarning(logDevice) << "[BatteryInfo] Could not find ActiveBattery in BatteryInfo";
        return std::nullopt;
    }
    return batteries.value(QStringLiteral("BatteryStatus")).toList().value(active).toMap();
}

int integerOf(const QVariantMap &battery, const char *attribute, int unknown)
{
    bool ok = false;
    const int number = battery.value(QLatin1String(attribute)).toInt(&ok);
    if (!ok)
        qCWarning(logDevice) << "[BatteryInfo] Could not find" << attribute << "in BatteryStatus";
    return ok && number != MissingInteger ? number : unknown;
}

QString receiverOf(const QVariantMap &status)
{
    const QVariantList sources =
        memberOf(status, QStringLiteral("WlcSourceInfo"), QStringLiteral("WlcSrcParameters")).toList();
    if (sources.isEmpty()) {
        qCWarning(logDevice) << "[BatteryInfo] Could not find list of WlcSrcParameters";
        return {};
    }
    const QString rxid = sources.first().toMap().value(QStringLiteral("RxID")).toString();
    if (rxid.isEmpty())
        qCWarning(logDevice) << "[BatteryInfo] RxID not present";
    return rxid == QLatin1String("null") ? QString() : rxid;
}

} // namespace

BatteryInfoPrivate::BatteryInfoPrivate(BatteryInfo *publicObject)
    : QObject(publicObject), q(publicObject), m_pps(new PpsObject(PpsPath, this))
{
    if (!openOrLog(m_pps, PpsOpenMode::Subscribe, OpenFailed))
        return;
    m_values.begin(readValues());
    connect(m_pps, &PpsObject::readyRead, this, &BatteryInfoPrivate::onReadyRead);
}

void BatteryInfoPrivate::onReadyRead()
{
    Changes::storeAndEmit(q, &m_values, readValues());
}

BatteryInfoPrivate::Values BatteryInfoPrivate::readValues()
{
    PpsData record;
    readPps(record);
    return {record, convertTemperature(record.temperature)};
}

void BatteryInfoPrivate::readPps(PpsData &record)
{
    record = {};
    const auto message = readOrLog(m_pps, Reading);
    if (!message)
        return;
    const QVariantMap status = attributesOf(*message, QStringLiteral("@status"));
    record.chargingState = chargingStateOf(status);
    if (const auto battery = activeBatteryOf(status)) {
        record.level = integerOf(*battery, "StateOfCharge", -1);
        record.present = battery->value(QStringLiteral("BatteryPresent")).toString() == QLatin1String("YES");
        record.condition = valueNamed(Conditions, battery->value(QStringLiteral("StateOfBattery")).toString())
                               .value_or(BatteryCondition::Unknown);
        record.fullChargeCapacity = integerOf(*battery, "FullChargeCap", -1);
        record.cycleCount = integerOf(*battery, "CycleCount", -1);
        record.temperature = integerOf(*battery, "Temperature", MissingInteger);
    }
    record.rxid = receiverOf(status);
}

float BatteryInfoPrivate::convertTemperature(int raw)
{
    if (raw == MissingInteger)
        return std::numeric_limits<float>::quiet_NaN();
    return float(raw) / 100;
}

} // namespace oz::device
