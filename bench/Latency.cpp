// From a publish in one process to a signal in another, beside the bare file and beside the message bus, in
// one run.

#include "BareFiles.hpp"
#include "Messages.hpp"
#include "PowerDevice.hpp"
#include "Processes.hpp"
#include "Report.hpp"

#include <oz/DeviceRoot.hpp>
#include <oz/PpsObject.hpp>
#include <oz/PpsPublisher.hpp>
#include <oz/device/BatteryInfo.hpp>
#include <oz/device/CellularDataInterface.hpp>
#include <oz/device/CellularNetworkInfo.hpp>
#include <oz/device/CellularRadioInfo.hpp>
#include <oz/device/DeviceInfo.hpp>
#include <oz/device/DisplayInfo.hpp>
#include <oz/device/MiracastManager.hpp>
#include <oz/device/SdCardInfo.hpp>
#include <oz/device/SimCardInfo.hpp>
#include <oz/device/WiFiDirect.hpp>

#include <QCoreApplication>
#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QFile>
#include <QTemporaryDir>
#include <QVariantMap>

#include <cstdio>
#include <functional>
#include <map>
#include <memory>

using namespace oz;
using namespace oz::bench;

namespace {

const char *const BusPath = "/facility";
const char *const BusInterface = "org.freedesktop.DBus.Properties";

// The message of the bus as plain values, as a client decodes it.
QVariant plain(const QVariant &value)
{
    if (value.userType() != qMetaTypeId<QDBusArgument>())
        return value;
    const auto argument = value.value<QDBusArgument>();
    if (argument.currentType() == QDBusArgument::MapType) {
        QVariantMap map = qdbus_cast<QVariantMap>(argument);
        for (QVariant &member : map)
            member = plain(member);
        return map;
    }
    QVariantList list = qdbus_cast<QVariantList>(argument);
    for (QVariant &element : list)
        element = plain(element);
    return list;
}

// Hears a property change on the bus, and makes of it what a facility does: values, compared with those
// before.
class BusFacility : public QObject
{
    Q_OBJECT

public:
    explicit BusFacility(Bell bell) : m_bell(bell) { }

public Q_SLOTS:
    void onPropertiesChanged(const QString &, const QVariantMap &changed, const QStringList &)
    {
        QVariantMap values = changed;
        for (QVariant &value : values)
            value = plain(value);
        if (values != m_values) {
            m_values = values;
            m_bell.ring();
        }
    }

private:
    Bell m_bell;
    QVariantMap m_values;
};

// Makes a facility and rings at the signal of its change.
template <typename Facility, typename Signal, typename... Arguments>
std::function<std::unique_ptr<QObject>(Bell)> ringsAt(Signal signal, const Arguments &...arguments)
{
    return [=](Bell bell) {
        auto facility = std::make_unique<Facility>(arguments...);
        QObject::connect(facility.get(), signal, [bell] { bell.ring(); });
        return facility;
    };
}

// Every facility that signals, by the message that it hears.
const std::map<QString, std::function<std::unique_ptr<QObject>(Bell)>> &facilities()
{
    using namespace device;
    static const std::map<QString, std::function<std::unique_ptr<QObject>(Bell)>> all{
        {"sdcard", ringsAt<SdCardInfo>(qOverload<SdCardState::Type>(&SdCardInfo::stateChanged))},
        {"battery",
            ringsAt<BatteryInfo>(qOverload<int, BatteryChargingState::Type>(&BatteryInfo::levelChanged))},
        {"simcard", ringsAt<SimCardInfo>(qOverload<SimCardState::Type>(&SimCardInfo::stateChanged))},
        {"radio", ringsAt<CellularRadioInfo>(&CellularRadioInfo::networkCountChanged)},
        {"cellular-network", ringsAt<CellularNetworkInfo>(&CellularNetworkInfo::signalStrengthChanged)},
        {"data-profile",
            ringsAt<CellularDataInterface>(
                qOverload<CellularConnectionState::Type>(&CellularDataInterface::connectionStateChanged),
                QStringLiteral("internet"))},
        {"device",
            ringsAt<DeviceInfo>(qOverload<UserActivityState::Type>(&DeviceInfo::activityStateChanged))},
        {"display", ringsAt<DisplayInfo>(qOverload<QSize>(&DisplayInfo::pixelSizeChanged), 0)},
        {"wifi-direct",
            ringsAt<WiFiDirect>(qOverload<QString, QString, WiFiDirectDeviceType::Type,
                WiFiDirectSecondaryDeviceType::Types, WiFiDirectRole::Type>(&WiFiDirect::deviceDiscovered))},
        {"miracast",
            ringsAt<MiracastManager>(
                qOverload<MiracastDisplayState::Type>(&MiracastManager::displayStateChanged))},
    };
    return all;
}

QString barePath(const QString &facility)
{
    return "/bare/" + facility + "/status";
}

int listen(const QString &role, const Bell &bell, const QString &facility)
{
    if (role == "file")
        followFile(QFile::encodeName(devicePath(barePath(facility))).toStdString(), [&] { bell.ring(); });
    if (role == "facility") {
        const auto followed = facilities().at(facility)(bell);
        bell.ring();
        return QCoreApplication::exec();
    }
    BusFacility followed(bell);
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.connect(QString(), BusPath, BusInterface, "PropertiesChanged", &followed,
            SLOT(onPropertiesChanged(QString, QVariantMap, QStringList))))
        return 1;
    bell.ring();
    return QCoreApplication::exec();
}

// One way of a change from this process to another.
struct Way
{
    Samples samples;
    Listener listener;
    std::function<void(bool changed)> change;
};

// Measures the ways in turns, so that whatever else the machine does falls on all of them.
std::vector<Samples> measure(const std::vector<std::unique_ptr<Way>> &ways, int rounds)
{
    for (int round = 0; round < rounds + 200; ++round) {
        for (const auto &way : ways) {
            const double begun = now();
            way->change(round % 2 == 0);
            const double latency = way->listener.heardAt() - begun;
            if (round >= 200)
                way->samples.values.push_back(latency);
        }
    }
    std::vector<Samples> samples;
    for (const auto &way : ways) {
        samples.push_back(way->samples);
        std::printf("  %-54s median %7.1f   p10 %7.1f   p90 %7.1f   p99 %7.1f\n", way->samples.name.c_str(),
            way->samples.median(), way->samples.percentile(0.1), way->samples.percentile(0.9),
            way->samples.percentile(0.99));
    }
    return samples;
}

// The bare file, the facility and the bus, with the same content.
std::vector<Samples> measureFacility(const char *program, const Message &message, int rounds)
{
    const QString facility = QString::fromStdString(message.facility);
    PpsPublisher publisher(message.path);
    BareFile bare(QFile::encodeName(devicePath(barePath(facility))).toStdString());
    PpsPublisher(barePath(facility)).replace(message.attributes);
    const auto textOf = [](const QVariantMap &attributes) {
        return "@status\n" + PpsObject::encode(attributes).toStdString();
    };
    const std::string texts[] = {textOf(message.attributes), textOf(message.changed)};
    QDBusConnection bus = QDBusConnection::sessionBus();

    std::vector<std::unique_ptr<Way>> ways;
    const auto add = [&](const char *name, const char *role, std::function<void(bool)> change) {
        ways.emplace_back(new Way{{message.facility + ": " + name, {}},
            Listener(program, {role, message.facility}), std::move(change)});
    };
    add("replace a file to read", "file", [&](bool changed) { bare.replace(texts[changed]); });
    add("publish to signal", "facility",
        [&](bool changed) { publisher.replace(changed ? message.changed : message.attributes); });
    add("message bus, property change to slot", "bus", [&](bool changed) {
        QDBusMessage signal = QDBusMessage::createSignal(BusPath, BusInterface, "PropertiesChanged");
        signal << "oz.Facility" << (changed ? message.changed : message.attributes) << QStringList();
        bus.send(signal);
    });
    return measure(ways, rounds);
}

// An activity of the power manager, beside a bare file with as much in it.
std::vector<Samples> measureActivity(const char *program, int rounds)
{
    PowerDevice device;
    BareFile bare(QFile::encodeName(devicePath(barePath("device"))).toStdString());
    PpsPublisher(barePath("device")).replace({{"status", "active"}});
    std::vector<std::unique_ptr<Way>> ways;
    ways.emplace_back(new Way{{"device: replace a file to read", {}}, Listener(program, {"file", "device"}),
        [&](bool changed) { bare.replace(changed ? "status::standby\n" : "status::active\n"); }});
    ways.emplace_back(new Way{{"device: status to signal", {}}, Listener(program, {"facility", "device"}),
        [&](bool changed) { device.send(changed ? "standby" : "active"); }});
    return measure(ways, rounds);
}

} // namespace

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    const QStringList words = QCoreApplication::arguments();
    if (words.value(1) == "--role")
        return listen(words.value(3), Bell(words.value(2).toInt()), words.value(4));
    const auto [json, rounds] = runOptions(argc, argv);

    const QTemporaryDir root("/dev/shm/oz-bench-XXXXXX");
    qputenv("OZ_DEVICE_ROOT", root.path().toLocal8Bit());
    const PrivateBus busDaemon;
    publishAll();
    std::vector<Samples> samples;
    std::vector<Ratio> ratios;
    std::printf("From one process to another, microseconds (%d rounds, in turns)\n", rounds);
    for (const Message &message : messages()) {
        if (!facilities().contains(QString::fromStdString(message.facility)))
            continue;
        const std::vector<Samples> measured = measureFacility(argv[0], message, rounds);
        const auto add = [&](const char *name, std::size_t under, double share, double aim) {
            ratios.push_back(
                ratioOf(message.facility + " / " + name, measured[1], measured[under], share, aim));
        };
        // The bare file is not decoded, which tells with a large message: there the bus is the measure.
        const bool isSmall = PpsObject::encode(message.attributes).size() <= 4096;
        add("file, median", 0, 0.5, isSmall ? 1.3 : 0);
        add("file, p99", 0, 0.99, isSmall ? 2 : 0);
        add("message bus, median", 2, 0.5, 0.5);
        add("message bus, p99", 2, 0.99, 0.5);
        samples.insert(samples.end(), measured.begin(), measured.end());
    }
    const std::vector<Samples> activity = measureActivity(argv[0], rounds);
    for (const double share : {0.5, 0.99}) {
        ratios.push_back(ratioOf(share < 0.9 ? "device / file, median" : "device / file, p99", activity[1],
            activity[0], share, 0));
    }
    samples.insert(samples.end(), activity.begin(), activity.end());
    const bool reached = print(ratios);
    if (!json.empty())
        writeJson(json, "us", samples, ratios);
    return reached ? 0 : 1;
}

#include "Latency.moc"
