#include "services/MiracastClient.hpp"
#include "services/Rigs.hpp"
#include "services/Services.hpp"

#include <oz/device/WiFiDirect.hpp>

#include <QFile>

// Wireless displays that are reached by Wi-Fi Direct, over stand-ins for wpa_supplicant and for ozcast.

using namespace oz;
using namespace oz::device;
using namespace oz::harness;

namespace {

const QString Tv = "42:00:00:00:01:00";
const QString Laptop = "42:00:00:00:02:00";
const QString DisplayElements = "00000600111c440032";
const QString Television = "\"TV\", \"42:00:00:00:01:00\", Display, Television";

class DisplayOnTheAirTest : public RigTest
{
protected:
    DisplayOnTheAirTest()
        : RigTest(std::make_unique<WpaSupplicantRig>(), 2), air(static_cast<WpaSupplicantRig &>(*rig))
    {
        QFile script(folder.filePath("script"));
        EXPECT_TRUE(script.open(QIODevice::WriteOnly));
        script.write("{}");
        script.close();
        qputenv("OZ_CAST_SCRIPT", script.fileName().toUtf8());
        rig->start();
        startDaemon(Miracast);
        EXPECT_TRUE(waitUntil([] {
            return sourceOf("miracast").contains("on the air by Wi-Fi Direct of wlan0");
        })) << sourceOf("miracast").toStdString();
        client.emplace();
        (void)air.asked();
    }
    ~DisplayOnTheAirTest() override { qunsetenv("OZ_CAST_SCRIPT"); }

    [[nodiscard]] QString scan()
    {
        client->ask(Scan);
        EXPECT_TRUE(waitUntil([&] { return air.asked() == "find start_with_full 10"; }));
        (void)air.happen("PeerComes", {Tv, "TV", DisplayElements, ""});
        (void)air.happen(
            "PeerComes", {Laptop, "Laptop", "00000600101c440032", ""}); // a source, as this device
        (void)air.happen("FindEnds");
        return client->after([](MiracastManager &) {});
    }
    // Asks for the display; nothing but the radio's part of it has happened then.
    void begin(const QString &pin = {})
    {
        client->ask(connectTo(Tv, pin));
        EXPECT_TRUE(waitUntil([&] { return air.asked().startsWith("connect "); }));
    }
    [[nodiscard]] QString completion()
    {
        QString found;
        EXPECT_TRUE(waitUntil([&] { return !(found = client->completions().join(", ")).isEmpty(); }));
        return found;
    }
    [[nodiscard]] QByteArray heard() const
    {
        QFile file(folder.filePath("script.heard"));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    static inline const QStringList Miracast{
        "--source", "miracast=wireless-display mdns=off caster=" OZ_RIG_SCRIPTS "/ozcast"};
    QTemporaryDir folder;
    WpaSupplicantRig &air;
    std::optional<MiracastClient> client;
};

TEST_F(DisplayOnTheAirTest, ItIsReachedByAGroupOfItsOwn)
{
    EXPECT_EQ(air.happen("Shown").section('\'', 1, 1),
        "000006"
        "0010"
        "1c44"
        "0032")
        << "peers see a source";
    EXPECT_EQ(scan(), "deviceDiscovered(" + Television + ") scanCompleted(Success)");
    begin();
    WiFiDirect wifi;
    EXPECT_EQ(wifi.connectionState(), WiFiDirectConnectionState::Connecting);
    (void)air.happen("GroupStarts", {"client", Tv});
    EXPECT_EQ(completion(), "connect Success");
    EXPECT_TRUE(heard().contains(R"("address":"192.168.77.1","connect-limit-ms":30000,"control-port":0)"))
        << heard().toStdString();
    EXPECT_TRUE(wifi.connectedDevices().contains(Tv));
    client->ask(Disconnect);
    EXPECT_EQ(completion(), "disconnect Success");
    EXPECT_TRUE(waitUntil([&] { return air.asked() == "disconnect"; })) << "the group ends with it";

    // What an application keeps a group for goes on.
    begin();
    (void)air.happen("GroupStarts", {"client", Tv});
    EXPECT_EQ(completion(), "connect Success");
    EXPECT_EQ(wifi.requestStartSession(), WiFiDirectResult::Success);
    client->ask(Disconnect);
    EXPECT_EQ(completion(), "disconnect Success");
    EXPECT_EQ(wifi.connectionState(), WiFiDirectConnectionState::Connected);
    EXPECT_EQ(client->resultOf(connectTo(Tv)), "Success") << "over the group that is there";
    // A group that ends takes the session with it.
    (void)air.happen("GroupEnds", {"true"});
    EXPECT_TRUE(waitUntil(
        [&] { return client->miracast.connectionState() == MiracastConnectionState::Disconnected; }));
    EXPECT_EQ(air.asked(), "");
}

TEST_F(DisplayOnTheAirTest, AConnectionFailsForTheReasonThatTheRadioTells)
{
    (void)scan();
    struct Row
    {
        const char *pin;
        QStringList failure;
        const char *result;
    };
    const Row rows[] = {
        {"76543210", {"WpsFailed", "18"}, "connect PinIncorrect"},
        {"", {"GONegotiationFailure", "10"}, "connect PinRequired"},
        {"", {"GONegotiationFailure", "11"}, "connect ConnectionFailed"},
        {"", {"GONegotiationFailure", "1"}, "connect ConnectionFailed"},
        {"", {"GroupFormationFailure", "0"}, "connect ConnectionFailed"},
    };
    for (const Row &row : rows) {
        begin(row.pin);
        (void)air.happen("Fails", row.failure);
        EXPECT_EQ(completion(), row.result) << row.failure.join(' ').toStdString();
    }
    begin();
    client->ask(Disconnect);
    EXPECT_EQ(completion(), "connect RequestCancelled");
    EXPECT_EQ(completion(), "disconnect Success");
    EXPECT_TRUE(waitUntil([&] { return air.asked() == "cancel"; }));
    begin();
    air.change(true);
    EXPECT_EQ(completion(), "connect WiFiFailure");
    EXPECT_TRUE(sourceOf("miracast").contains("none on the air: the link of wlan0 is down"))
        << sourceOf("miracast").toStdString();
    EXPECT_EQ(client->resultOf(connectTo(Tv)), "WiFiFailure");
    log.take();
}

TEST_F(DisplayOnTheAirTest, ASessionAndItsGroupEndWithTheDaemon)
{
    (void)scan();
    begin();
    (void)air.happen("GroupStarts", {"client", Tv});
    EXPECT_EQ(completion(), "connect Success");
    daemon.kill();
    daemon.waitForFinished();
    startDaemon(Miracast);
    EXPECT_TRUE(waitUntil(
        [&] { return client->miracast.connectionState() == MiracastConnectionState::Disconnected; }));
    EXPECT_TRUE(waitUntil([&] { return air.asked().contains("disconnect"); }));
}

} // namespace
