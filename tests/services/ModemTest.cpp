#include "services/Rigs.hpp"
#include "services/Services.hpp"

#include <oz/device/CellularDataInterface.hpp>
#include <oz/device/CellularNetworkInfo.hpp>
#include <oz/device/CellularRadioInfo.hpp>
#include <oz/device/HardwareInfo.hpp>
#include <oz/device/SimCardInfo.hpp>

#include <unistd.h>

// A phone's life with a real ModemManager, whose modem answers AT commands, as applications see it.

using namespace oz;
using namespace oz::device;
using namespace oz::harness;

namespace {

QString diagnosisOf(const QString &facility)
{
    const QVariantMap states = attributesOf("/pps/system/ozdeviced/status").value("facilities").toMap();
    return states.value(facility).toMap().value("reason").toString();
}

class ModemTest : public DeviceTest
{
protected:
    ModemTest() : rig("simcard") { }
    ~ModemTest() override
    {
        daemon.terminate();
        EXPECT_TRUE(daemon.state() == QProcess::NotRunning || daemon.waitForFinished());
        // No log identifies the card or its owner.
        const QByteArray logged = daemon.readAllStandardError();
        for (const QByteArray &secret : {rig.modem.subscriber, rig.modem.imei,
                 QByteArray("89490100000000000001"), QByteArray("1234"), QByteArray("15551234")})
            EXPECT_FALSE(logged.contains(secret)) << logged.toStdString();
    }

    /*! With further options of the card's source. */
    void start(const QString &card = {})
    {
        rig.start();
        startDaemon(card);
    }
    void startDaemon(const QString &card)
    {
        QProcessEnvironment environment = rig.environment();
        environment.insert("OZ_GRACE_TIME", "8");
        environment.insert("QT_LOGGING_RULES", "*.debug=true;qt.*=false");
        daemon.setProcessEnvironment(environment);
        daemon.start(OZ_DAEMON,
            {"--config", "/dev/null", "--source", "hardware=linux", "--source",
                "simcard=modemmanager " + card, "--source", "radio=modemmanager", "--source",
                "cellular-network=modemmanager"});
        awaitDaemon(&daemon);
    }

    ModemRig rig;
    QProcess daemon;
};

TEST_F(ModemTest, ACardWaitsForItsPinForItsPukAndIsReadyThen)
{
    rig.modem.pin = "1234";
    start();
    const SimCardInfo card;
    EXPECT_EQ(card.state(), SimCardState::PinRequired);
    EXPECT_EQ(card.serialNumber(), "89490100000000000001");
    EXPECT_EQ(card.subscriberIdentifier(), "");
    EXPECT_TRUE(diagnosisOf("simcard").startsWith("the SIM card wants its PIN: 3 tries are left"))
        << diagnosisOf("simcard").toStdString();
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(rig.order({"--sim=0", "--pin=0000"}), "");
    EXPECT_EQ(rig.modem.puk, "12345678");
    EXPECT_EQ(card.state(), SimCardState::PinRequired);
    EXPECT_NE(rig.order({"--sim=0", "--pin=4321", "--puk=12345678"}), "");
    EXPECT_TRUE(waitUntil([&] { return card.state() == SimCardState::Ready; }));
    EXPECT_TRUE(waitUntil([&] { return card.subscriberIdentifier() == rig.modem.subscriber; }));
    EXPECT_TRUE(
        waitUntil([&] { return card.mobileCountryCode() == "001" && card.mobileNetworkCode() == "01"; }));
}

TEST_F(ModemTest, NetworksComeAndGoAtHomeAndAbroad)
{
    start();
    const CellularRadioInfo radio;
    const CellularNetworkInfo network;
    EXPECT_TRUE(radio.isPoweredOn());
    EXPECT_EQ(radio.enabledTechnologies(),
        CellularTechnology::Gsm | CellularTechnology::Umts | CellularTechnology::Lte);
    EXPECT_EQ(radio.activeTechnologies(), CellularTechnology::Lte);
    EXPECT_EQ(network.name(), "Test Home");
    EXPECT_FALSE(network.isRoaming());
    EXPECT_TRUE(waitUntil([&] { return HardwareInfo().imei() == rig.modem.imei; }));
    const int strength = network.signalStrength();
    rig.modem.setSignal(1);
    EXPECT_TRUE(waitUntil([&] { return network.signalStrength() < strength; }));

    rig.modem.nameNetwork("Abroad", "00202");
    rig.modem.registerIn(AtModem::Roaming, AtModem::Edge);
    EXPECT_TRUE(waitUntil([&] {
        return network.isRoaming() && network.name() == "Abroad" && network.mobileCountryCode() == "002"
            && radio.activeTechnologies() == CellularTechnology::Gsm;
    })) << valuesOf(network).toStdString();
    for (const auto lost : {AtModem::Searching, AtModem::Denied}) {
        rig.modem.registerIn(lost, AtModem::Lte);
        EXPECT_TRUE(waitUntil([&] { return radio.networkCount() == 0 && network.name().isEmpty(); }));
        rig.modem.registerIn(AtModem::Home, AtModem::Lte);
        EXPECT_TRUE(waitUntil([&] { return radio.networkCount() == 1 && !network.name().isEmpty(); }));
    }
    rig.modem.registerIn(AtModem::EmergencyOnly, AtModem::Lte);
    EXPECT_TRUE(
        waitUntil([&] { return radio.networkCount() == 0; })); // ModemManager tells no technology then
    EXPECT_TRUE(waitUntil(
        [&] { return diagnosisOf("cellular-network") == "the network admits emergency calls only"; }));
}

TEST_F(ModemTest, AModemThatIsTakenAwayIsUnknownUntilItIsBack)
{
    rig.allowAll();
    start();
    const CellularRadioInfo radio;
    const CellularNetworkInfo network;
    const SimCardInfo card;
    EXPECT_EQ(network.name(), "Test Home");
    rig.unplug(true); // for longer than a restart may take
    EXPECT_TRUE(waitUntil([&] { return network.name().isEmpty() && !radio.isPoweredOn(); }));
    EXPECT_EQ(card.state(), SimCardState::NotDetected);
    EXPECT_EQ(diagnosisOf("radio"), "ModemManager knows no modem");
    rig.unplug(false);
    EXPECT_TRUE(waitUntil([&] { return card.state() == SimCardState::Ready; }));
    (void)rig.order({"--modem=any", "--enable"});
    EXPECT_TRUE(waitUntil([&] { return network.name() == "Test Home" && radio.isPoweredOn(); }));
}

TEST_F(ModemTest, ACardThatIsPulledIsMissingUntilItIsPutBack)
{
    rig.plugin = "telit";
    start();
    const SimCardInfo card;
    EXPECT_EQ(card.state(), SimCardState::Ready);
    rig.modem.insertCard(false);
    EXPECT_TRUE(waitUntil([&] { return card.state() == SimCardState::NotDetected; }));
    rig.modem.insertCard(true);
    EXPECT_TRUE(waitUntil([&] { return card.state() == SimCardState::Ready; }));
    EXPECT_EQ(card.subscriberIdentifier(), rig.modem.subscriber);
}

TEST_F(ModemTest, OfTwoModemsEachFacilityHasTheOneThatItNames)
{
    AtModem other(QStringLiteral("oz-other-%1-").arg(::getpid()));
    other.imei = "990000862471854";
    other.subscriber = "002020000000001";
    rig.start();
    rig.plug(other, "other");
    EXPECT_TRUE(waitUntil([&] { return rig.order({"--list-modems"}).count("/Modem/") == 2; }));
    startDaemon("modem=990000862471854");
    const SimCardInfo card;
    EXPECT_TRUE(waitUntil([&] { return card.subscriberIdentifier() == other.subscriber; }));
    EXPECT_EQ(CellularNetworkInfo().name(), "Test Home"); // of the first, which is enabled
}

class TwoSlotTest : public RigTest
{
protected:
    TwoSlotTest() : RigTest(std::make_unique<TwoSlotRig>())
    {
        rig->start();
        startDaemon();
    }
};

TEST_F(TwoSlotTest, TheCardIsThatOfTheSlotInUse)
{
    const SimCardInfo card;
    EXPECT_EQ(card.serialNumber(), "8949010000000000001");
    for (const bool isSecond : {true, false}) {
        rig->change(isSecond);
        const QString serialNumber = isSecond ? "8949010000000000002" : "8949010000000000001";
        const QString subscriber = isSecond ? "001020000000002" : "001010000000001";
        EXPECT_TRUE(waitUntil([&] { return card.serialNumber() == serialNumber; }));
        EXPECT_TRUE(waitUntil([&] { return card.subscriberIdentifier() == subscriber; }));
        EXPECT_EQ(card.mobileNetworkCode(), isSecond ? "02" : "01");
        EXPECT_EQ(card.state(), SimCardState::Ready);
    }
}

class ProfilesTest : public RigTest
{
protected:
    ProfilesTest() : RigTest(std::make_unique<NetworkManagerRig>())
    {
        rig->start();
        startDaemon();
    }
};

TEST_F(ProfilesTest, AProfileIsConnectedForItsUsersAndWhatIsRefusedIsNotPossible)
{
    EXPECT_EQ(CellularDataInterface().allNames(), QStringList{"Internet--Home-"});
    CellularDataInterface profile("Internet--Home-");
    CellularDataInterface other("Internet--Home-");
    EXPECT_EQ(profile.requestConnect(), CellularConnectionRequestResult::Requested);
    EXPECT_TRUE(waitUntil([&] { return profile.connectionState() == CellularConnectionState::Connected; }));
    EXPECT_EQ(other.requestConnect(), CellularConnectionRequestResult::Requested);
    EXPECT_EQ(profile.requestDisconnect(), CellularConnectionRequestResult::Requested);
    settle();
    EXPECT_EQ(profile.connectionState(), CellularConnectionState::Connected); // for the other
    EXPECT_EQ(other.requestDisconnect(), CellularConnectionRequestResult::Requested);
    EXPECT_TRUE(
        waitUntil([&] { return profile.connectionState() == CellularConnectionState::Disconnected; }));
    {
        CellularDataInterface going("Internet--Home-");
        EXPECT_EQ(going.requestConnect(), CellularConnectionRequestResult::Requested);
        EXPECT_TRUE(
            waitUntil([&] { return profile.connectionState() == CellularConnectionState::Connected; }));
    }
    EXPECT_TRUE(
        waitUntil([&] { return profile.connectionState() == CellularConnectionState::Disconnected; }));
    static_cast<NetworkManagerRig &>(*rig).refuse();
    EXPECT_EQ(profile.requestConnect(), CellularConnectionRequestResult::NotPossible);
}

class MobileDataTest : public RigTest
{
protected:
    MobileDataTest() : RigTest(std::make_unique<MobileDataRig>()) { }
    MobileDataRig &service() { return static_cast<MobileDataRig &>(*rig); }
};

TEST_F(MobileDataTest, ARealConnectionComesUpBreaksAndIsRefusedByTheNetwork)
{
    if (::geteuid() != 0)
        GTEST_SKIP() << "only root can give NetworkManager a network of its own";
    if (const QString problem = namespaceProblem({"--mount", "--net"}); !problem.isEmpty())
        GTEST_SKIP() << "NetworkManager needs a network of its own: " << problem.toStdString();
    rig->start();
    startDaemon({"--source", "data-profile=networkmanager"});
    CellularDataInterface profile("Internet");
    QList<int> states;
    QObject::connect(&profile, qOverload<int>(&CellularDataInterface::connectionStateChanged),
        [&](int state) { states.append(state); });
    const auto waitFor = [&](CellularConnectionState::Type state) {
        return waitUntil([&] { return profile.connectionState() == state; });
    };
    EXPECT_EQ(profile.requestConnect(), CellularConnectionRequestResult::Requested);
    EXPECT_TRUE(waitFor(CellularConnectionState::Connected));
    EXPECT_EQ(
        states, (QList<int>{CellularConnectionState::PendingConnect, CellularConnectionState::Connected}));
    EXPECT_EQ(profile.networkInterfaceName(), "ppp0");
    EXPECT_EQ(profile.accessPointName(), "internet.example");

    service().hangUp();
    EXPECT_TRUE(waitFor(CellularConnectionState::Disconnected));
    EXPECT_EQ(profile.networkInterfaceName(), "");

    service().modem.admitsData = false;
    states.clear();
    CellularDataInterface other("Internet"); // the first one still has what it had requested
    EXPECT_EQ(other.requestConnect(), CellularConnectionRequestResult::Requested);
    const QList<int> refused{CellularConnectionState::PendingConnect, CellularConnectionState::Disconnected};
    EXPECT_TRUE(waitUntil([&] { return states == refused; })) << ::testing::PrintToString(states);
}

} // namespace
