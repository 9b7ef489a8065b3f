#include "hardware/KernelInventory.hpp"

#include "linux/SysFolder.hpp"
#include "linux/UdevDevices.hpp"

#include <QDir>

#include <algorithm>

namespace oz::services {

namespace {

using Processor = Hardware::Processor;
using Hdmi = Hardware::Hdmi;

const QString DeviceTree = QStringLiteral("/sys/firmware/devicetree/base/");
const QString Dmi = QStringLiteral("/sys/class/dmi/id/");
const QString CpuFolder = QStringLiteral("/sys/devices/system/cpu/");

// Placeholders that manufacturers leave in the firmware.
bool isFiller(const QString &text)
{
    static const QStringList fillers{QStringLiteral("0"), QStringLiteral("default string"),
        QStringLiteral("invalid"), QStringLiteral("none"), QStringLiteral("not applicable"),
        QStringLiteral("not available"), QStringLiteral("not specified"), QStringLiteral("sku"),
        QStringLiteral("system product name"), QStringLiteral("system serial number"),
        QStringLiteral("to be filled by o.e.m."), QStringLiteral("unknown")};
    return text.isEmpty() || fillers.contains(text.toLower());
}

// The content of the first of the files that has any.
std::optional<QString> textIn(const QStringList &files)
{
    for (const QString &file : files) {
        const auto text = SysFolder::readFile(file);
        if (text && !isFiller(*text))
            return text;
    }
    return std::nullopt;
}

// "0,2-4", as the kernel writes sets of numbers.
QList<int> numbersIn(const QString &text)
{
    constexpr int Most = 8192; // processors that Linux can be built for
    QList<int> numbers;
    const QStringList ranges = text.split(u',', Qt::SkipEmptyParts);
    for (const QString &range : ranges) {
        const int first = range.section(u'-', 0, 0).toInt();
        const int last = range.section(u'-', -1).toInt();
        for (int number = first; number <= last && numbers.size() < Most; ++number)
            numbers.append(number);
    }
    return numbers;
}

// The fields of each processor that is on line.
QMap<int, QMap<QString, QString>> cpuInfo()
{
    QMap<int, QMap<QString, QString>> processors;
    const QStringList lines =
        SysFolder::readFile(QStringLiteral("/proc/cpuinfo")).value_or(QString()).split(u'\n');
    int current = -1;
    for (const QString &line : lines) {
        const QString name = line.section(u':', 0, 0).trimmed();
        const QString value = line.section(u':', 1).trimmed();
        bool isNumber = false;
        const int number = name == u"processor" ? value.toInt(&isNumber) : 0;
        if (isNumber)
            processors[current = number].clear();
        else if (current >= 0 && !name.isEmpty())
            processors[current].insert(name, value);
    }
    return processors;
}

std::optional<QList<Processor>> processors()
{
    const auto info = cpuInfo();
    // Those that are switched off to save power too.
    QList<int> present = numbersIn(SysFolder::readFile(CpuFolder + u"present").value_or(QString()));
    if (present.isEmpty())
        present = info.keys();
    if (present.isEmpty())
        return std::nullopt;
    QList<Processor> processors;
    for (const int number : present) {
        Processor &processor = processors.emplaceBack();
        const auto fields = info.value(number);
        if (const QString model = fields.value(QStringLiteral("model name")); !model.isEmpty())
            processor.model = model;
        const auto kilohertz =
            SysFolder::number(SysFolder::readFiles(CpuFolder + u"cpu" + QString::number(number) + u"/cpufreq",
                                  {QStringLiteral("cpuinfo_max_freq")}),
                QStringLiteral("cpuinfo_max_freq"));
        // Where the speed cannot be set it is what it is.
        const auto megahertz = SysFolder::number(fields, QStringLiteral("cpu MHz"));
        if (kilohertz)
            processor.speed = qRound(*kilohertz / 1000);
        else if (megahertz)
            processor.speed = qRound(*megahertz);
    }
    return processors;
}

// A graphics driver tells of a connector, but the device tree alone of its size.
std::optional<Hdmi> hdmi()
{
    const auto foldersIn = [](const QString &folder, const QString &filter) {
        return QDir(folder).entryList({filter}, QDir::AllEntries | QDir::NoDotAndDotDot);
    };
    const QString graphics = QStringLiteral("/sys/class/drm");
    bool hasConnector = !foldersIn(graphics, QStringLiteral("card*-HDMI-*")).isEmpty();
    const QStringList nodes = foldersIn(DeviceTree, QStringLiteral("*"));
    for (const QString &node : nodes) {
        if (SysFolder::readFile(DeviceTree + node + u"/compatible") != u"hdmi-connector")
            continue;
        if (SysFolder::readFile(DeviceTree + node + u"/type") == u"d")
            return Hdmi::Micro;
        hasConnector = true;
    }
    if (hasConnector || foldersIn(graphics, QStringLiteral("card*")).isEmpty())
        return std::nullopt;
    return Hdmi::None;
}

std::optional<QString> keyboard()
{
    if (!QDir(QStringLiteral("/sys/class/input")).exists())
        return std::nullopt;
    const QList<UdevDevice> inputs = udevDevices(QStringLiteral("input"));
    const auto is = [](const UdevDevice &input, const char *kind) {
        return input.properties.value(QLatin1String(kind)) == u"1";
    };
    // A power button has a key too; a keyboard of the screen's is made by a program.
    const bool hasKeyboard = std::any_of(inputs.begin(), inputs.end(), [&](const UdevDevice &input) {
        return is(input, "ID_INPUT_KEYBOARD") && !input.path.startsWith(u"/sys/devices/virtual/input/");
    });
    if (hasKeyboard)
        return QStringLiteral("physical");
    // Where udev has looked at none of them, nobody knows.
    const bool isTold = inputs.isEmpty()
        || std::any_of(
            inputs.begin(), inputs.end(), [&](const UdevDevice &input) { return is(input, "ID_INPUT"); });
    return isTold ? std::optional(QStringLiteral("none")) : std::nullopt;
}

} // namespace

Hardware kernelInventory()
{
    Hardware state;
    state.serialNumber = textIn({DeviceTree + u"serial-number", Dmi + u"product_serial"});
    state.hardwareId = textIn({DeviceTree + u"compatible", Dmi + u"board_name"});
    state.modelName = textIn({DeviceTree + u"model", Dmi + u"product_name"});
    state.modelNumber = textIn({Dmi + u"product_sku"});
    state.deviceName = textIn({QStringLiteral("/proc/sys/kernel/hostname")});
    state.processors = processors();
    state.keyboard = keyboard();
    state.hdmi = hdmi();
    return state;
}

} // namespace oz::services
