#include "device/Objects.hpp"
#include "harness/Testing.hpp"

#include <oz/device/HardwareInfo.hpp>

using namespace oz::device;
using namespace oz::harness;

namespace {

const QString Private = "/pps/services/private/deviceproperties";
const QString Properties = "/pps/services/deviceproperties";
const QString Inventory = "/pps/services/hw_info/inventory";

const QByteArray Parts = R"(@inventory
HDMI::Micro
Keyboard::qwerty
Processor_Numbers:n:2
Processor1_CPUSpeed::1500MHz
Processor1_CPUName::Alpha
Processor2_CPUSpeed::900MHz
)";

const QString NotOpened = "HardwareInfo - failed to open PPS object:" + Missing;
const QString NoCount = "HardwareInfo::processorCount() failed to convert field to integer";

class HardwareInfoTest : public DeviceTest
{
protected:
    void publish(const QByteArray &lines) { root.place(Inventory, Parts + lines); }

    HardwareInfo hardware;
};

TEST_F(HardwareInfoTest, ReadsEachPropertyFromItsObjectAtEachCall)
{
    root.place(Private, "@any\ndevicepin::2100\ndeviceserialnumber:n:77\nIMEI::35\nMEID::99\n");
    root.place(Properties, "devicename::Mine\nmodelname::Model\nmodelnumber::M1\nhardwareid::KSL100-3\n");
    publish("");
    EXPECT_EQ(valuesOf(hardware),
        "pin=\"2100\" serialNumber=\"77\" imei=\"35\" meid=\"99\" hardwareId=\"KSL100-3\" "
        "deviceName=\"Mine\" modelName=\"Model\" modelNumber=\"M1\" isPhysicalKeyboardDevice=true "
        "hdmiConnector=Micro isTrackpadDevice=true hasPhysicalPhoneKeys=true hasPhysicalBackButton=true "
        "hasPhysicalMenuButton=true");
    EXPECT_EQ(hardware.processorCount(), 2);
    EXPECT_EQ(hardware.processorSpeed(0), 1500);
    EXPECT_EQ(std::as_const(hardware).processorSpeed(1), 900);
    EXPECT_EQ(hardware.processorModel(0), "Alpha");

    root.place(Properties, "devicename::Yours\nhardwareid::KSL100-5\n");
    EXPECT_EQ(hardware.deviceName(), "Yours");
    EXPECT_EQ(hardware.modelName(), "");
    EXPECT_FALSE(hardware.hasPhysicalBackButton());
}

TEST_F(HardwareInfoTest, WithoutItsObjectsEverythingIsUnknownAndEachCallSaysSo)
{
    EXPECT_EQ(valuesOf(hardware),
        "pin=\"\" serialNumber=\"\" imei=\"\" meid=\"\" hardwareId=\"\" deviceName=\"\" modelName=\"\" "
        "modelNumber=\"\" isPhysicalKeyboardDevice=false hdmiConnector=Unknown isTrackpadDevice=false "
        "hasPhysicalPhoneKeys=false hasPhysicalBackButton=false hasPhysicalMenuButton=false");
    EXPECT_EQ(log.take(), QStringList(14, NotOpened));
    EXPECT_EQ(hardware.processorCount(), 0);
    EXPECT_EQ(log.take(), (QStringList{NotOpened, NoCount}));
    EXPECT_EQ(hardware.processorSpeed(0), -1);
    EXPECT_EQ(log.take(),
        (QStringList{NotOpened, NoCount,
            "HardwareInfo::processorSpeed(): Invalid processor index 0 on a device with 0 processors."}));
    root.place(Private, "devicepin:n:x\n");
    EXPECT_EQ(hardware.pin(), "");
    EXPECT_EQ(log.take(), QStringList{"HardwareInfo - failed to decode PPS data"});
}

TEST_F(HardwareInfoTest, TellsWhatTheInventorySaysOfKeyboardAndHdmi)
{
    const std::tuple<const char *, bool, HdmiConnector::Type> rows[] = {
        {"Keyboard::none", false, HdmiConnector::Micro},
        {"Keyboard::NONE", false, HdmiConnector::Micro},
        {"Keyboard::nonesuch", true, HdmiConnector::Micro},
        {"Keyboard::", true, HdmiConnector::Micro},
        {"-Keyboard\nKeyboards::1", false, HdmiConnector::Micro},
        {"HDMI::None", true, HdmiConnector::None},
        {"HDMI::micro", true, HdmiConnector::Unknown},
        {"HDMI:n:2", true, HdmiConnector::Unknown},
    };
    for (const auto &[line, keyboard, hdmi] : rows) {
        publish(QByteArray(line) + "\n");
        EXPECT_EQ(hardware.isPhysicalKeyboardDevice(), keyboard) << line;
        EXPECT_EQ(hardware.hdmiConnector(), hdmi) << line;
    }
    root.place(Inventory, "@inventory\n");
    EXPECT_FALSE(hardware.isPhysicalKeyboardDevice());
}

TEST_F(HardwareInfoTest, AProcessorThatIsNotThereOrNotDescribedIsUnknown)
{
    const QString speed = "HardwareInfo::processorSpeed(): ";
    const std::tuple<const char *, int, int, QStringList> rows[] = {
        {"Other::1", 2, -1, {speed + "Invalid processor index 2 on a device with 2 processors."}},
        {"Other::1", -1, -1, {speed + "Invalid processor index -1 on a device with 2 processors."}},
        {"Processor_Numbers::two", 0, -1,
            {NoCount, speed + "Invalid processor index 0 on a device with 0 processors."}},
        {"Processor_Numbers::3", 2, -1, {speed + "Failed to find PPS data for key \"Processor3_CPUSpeed\""}},
        {"Processor1_CPUSpeed::fastMHz", 0, -1, {speed + "Failed to covert PPS data"}},
        {"Processor1_CPUSpeed::1500", 0, 1, {}},
        {"Processor1_CPUSpeed::15", 0, -1, {speed + "Failed to covert PPS data"}},
    };
    for (const auto &[line, index, mhz, warnings] : rows) {
        publish(QByteArray(line) + "\n");
        EXPECT_EQ(hardware.processorSpeed(index), mhz) << line;
        EXPECT_EQ(log.take(), warnings) << line;
    }
    publish("");
    EXPECT_EQ(hardware.processorModel(1), "");
    EXPECT_EQ(hardware.processorModel(2), "");
    EXPECT_EQ(log.take(),
        (QStringList{"HardwareInfo::processorModel(): Failed to find PPS data for key \"Processor2_CPUName\"",
            "HardwareInfo::processorModel(): Invalid processor index 2 on a device with 2 processors."}));
}

} // namespace
