#include <oz/device/HardwareInfo.hpp>

#include "HardwareFamily.hpp"
#include "HardwareInfoPrivate.hpp"
#include "NamedValue.hpp"
#include "PpsReading.hpp"
#include "ThreadRule.hpp"

#include <oz/PpsObject.hpp>

#include <algorithm>
#include <utility>

namespace oz::device {

namespace {

const QString PrivatePpsPath = QStringLiteral("/pps/services/private/deviceproperties");
const QString PropertiesPpsPath = QStringLiteral("/pps/services/deviceproperties");
const QString InventoryPpsPath = QStringLiteral("/pps/services/hw_info/inventory");

constexpr LogText OpenFailed{"HardwareInfo - failed to open PPS object: ", LogText::ErrorString};
constexpr ReadTexts Reading{{"HardwareInfo - failed to read PPS data: ", LogText::ErrorString},
    {"HardwareInfo - failed to decode PPS data"}};

constexpr int UnknownSpeed = -1;

constexpr NamedValue<HdmiConnector::Type> Connectors[] = {
    {"Micro", HdmiConnector::Micro},
    {"None", HdmiConnector::None},
};

QVariantMap readDeviceProperties(const QString &path)
{
    PpsObject pps(path);
    if (!openOrLog(&pps, PpsOpenMode::Subscribe, OpenFailed))
        return {};
    return attributesOrLog(&pps, Reading);
}

QString textOf(const QString &path, const QString &attribute)
{
    return readDeviceProperties(path).value(attribute).toString();
}

int processorCountIn(const QVariantMap &inventory)
{
    bool ok = false;
    const int count = inventory.value(QStringLiteral("Processor_Numbers")).toInt(&ok);
    if (!ok)
        qCWarning(logDevice) << "HardwareInfo::processorCount() failed to convert field to integer";
    return count;
}

// The warnings of one question about a processor.
struct ProcessorTexts
{
    const char *invalidIndex;
    const char *keyMissing;
};

// The inventory's text about the processor \a index under "Processor1" and so on, with \a suffix behind
// it.
std::optional<QString> processorText(int index, const QString &suffix, const ProcessorTexts &texts)
{
    const QVariantMap inventory = readDeviceProperties(InventoryPpsPath);
    const int count = processorCountIn(inventory);
    if (index < 0 || index >= count) {
        qCWarning(logDevice) << texts.invalidIndex << index << "on a device with" << count << "processors.";
        return std::nullopt;
    }
    const QString key = QStringLiteral("Processor") + QString::number(index + 1) + suffix;
    const QVariant text = inventory.value(key);
    if (!text.isValid()) {
        qCWarning(logDevice) << texts.keyMissing << key;
        return std::nullopt;
    }
    return text.toString();
}

bool isKestrel()
{
    const QString id = textOf(PropertiesPpsPath, QStringLiteral("hardwareid"));
    return std::any_of(std::begin(KestrelHardwareIds), std::end(KestrelHardwareIds),
        [&id](const char *known) { return id == QLatin1String(known); });
}

} // namespace

HardwareInfo::HardwareInfo(QObject *parent) : QObject(parent), d(new HardwareInfoPrivate)
{
    keepOnThread(this);
}

HardwareInfo::~HardwareInfo()
{
    delete d;
}

QString HardwareInfo::pin() const
{
    return textOf(PrivatePpsPath, QStringLiteral("devicepin"));
}

QString HardwareInfo::serialNumber() const
{
    return textOf(PrivatePpsPath, QStringLiteral("deviceserialnumber"));
}

QString HardwareInfo::imei() const
{
    return textOf(PrivatePpsPath, QStringLiteral("IMEI"));
}

QString HardwareInfo::meid() const
{
    return textOf(PrivatePpsPath, QStringLiteral("MEID"));
}

QString HardwareInfo::hardwareId() const
{
    return textOf(PropertiesPpsPath, QStringLiteral("hardwareid"));
}

QString HardwareInfo::deviceName() const
{
    return textOf(PropertiesPpsPath, QStringLiteral("devicename"));
}

QString HardwareInfo::modelName() const
{
    return textOf(PropertiesPpsPath, QStringLiteral("modelname"));
}

QString HardwareInfo::modelNumber() const
{
    return textOf(PropertiesPpsPath, QStringLiteral("modelnumber"));
}

bool HardwareInfo::isPhysicalKeyboardDevice() const
{
    const QVariant keyboard = readDeviceProperties(InventoryPpsPath).value(QStringLiteral("Keyboard"));
    return keyboard.isValid() && keyboard.toString().compare(QLatin1String("none"), Qt::CaseInsensitive) != 0;
}

HdmiConnector::Type HardwareInfo::hdmiConnector() const
{
    return valueNamed(Connectors, textOf(InventoryPpsPath, QStringLiteral("HDMI")))
        .value_or(HdmiConnector::Unknown);
}

bool HardwareInfo::isTrackpadDevice() const
{
    return isKestrel();
}

bool HardwareInfo::hasPhysicalPhoneKeys() const
{
    return isKestrel();
}

bool HardwareInfo::hasPhysicalBackButton() const
{
    return isKestrel();
}

bool HardwareInfo::hasPhysicalMenuButton() const
{
    return isKestrel();
}

int HardwareInfo::processorCount() const
{
    return processorCountIn(readDeviceProperties(InventoryPpsPath));
}

int HardwareInfo::processorCount()
{
    return std::as_const(*this).processorCount();
}

int HardwareInfo::processorSpeed(int index) const
{
    auto text = processorText(index, QStringLiteral("_CPUSpeed"),
        {"HardwareInfo::processorSpeed(): Invalid processor index",
            "HardwareInfo::processorSpeed(): Failed to find PPS data for key"});
    if (!text)
        return UnknownSpeed;
    text->chop(3); // the unit
    bool ok = false;
    const int speed = text->toInt(&ok);
    if (!ok)
        qCWarning(logDevice) << "HardwareInfo::processorSpeed(): Failed to covert PPS data";
    return ok ? speed : UnknownSpeed;
}

int HardwareInfo::processorSpeed(int index)
{
    return std::as_const(*this).processorSpeed(index);
}

QString HardwareInfo::processorModel(int index) const
{
    return processorText(index, QStringLiteral("_CPUName"),
        {"HardwareInfo::processorModel(): Invalid processor index",
            "HardwareInfo::processorModel(): Failed to find PPS data for key"})
        .value_or(QString());
}

QString HardwareInfo::processorModel(int index)
{
    return std::as_const(*this).processorModel(index);
}

} // namespace oz::device
