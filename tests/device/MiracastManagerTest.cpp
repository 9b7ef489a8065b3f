#include "harness/Testing.hpp"

#include <oz/PpsObject.hpp>
#include <oz/PpsServer.hpp>
#include <oz/device/MiracastManager.hpp>
#include <oz/device/RequestError.hpp>

#include <QDateTime>

using namespace oz;
using namespace oz::device;
using namespace oz::harness;

namespace {

const QString Status = "/pps/services/miracast/status";
const QString Sinks = "/pps/services/miracast/sinks";
const QString Inventory = "/pps/services/hw_info/inventory";

// The service as far as its requests go, on the test's own thread: none of them waits.
struct Service
{
    Service()
    {
        QObject::connect(&server, &PpsServer::received,
            [this](const PpsServer::Client &, const QByteArray &text) { messages.append(text); });
        EXPECT_TRUE(server.listen());
    }
    QByteArray next()
    {
        EXPECT_TRUE(waitUntil([&] { return !messages.isEmpty(); }));
        return messages.isEmpty() ? QByteArray() : messages.takeFirst();
    }
    QByteArray nextToken() { return next().split('\n').value(1).mid(4); }

    PpsServer server{"/pps/services/miracast/control"};
    QByteArrayList messages;
};

class MiracastManagerTest : public DeviceTest
{
protected:
    void SetUp() override
    {
        root.place(Inventory, "@inventory\nMiracast_Supported::yes\n");
        publish("");
    }
    void publish(const QByteArray &attributes) const
    {
        root.place(Status, "@status\n" + attributes + (attributes.isEmpty() ? "" : "\n"));
    }
    // Takes the last answer back first: a delta has nothing that stays the same.
    void answer(const QByteArray &token, const QByteArray &request, const QByteArray &error) const
    {
        publish("");
        settle();
        publish("last_request_id::" + token + "\nlast_request::" + request + "\nlast_request_err:" + error);
    }
};

TEST_F(MiracastManagerTest, EachRequestIsOneMessageOfItsOwnTextWithATokenOfItsTime)
{
    Service service;
    MiracastManager miracast;
    const auto connectTo = [&](const char *pin) {
        return [&miracast, pin] { miracast.requestConnect("00:11:22:33:44:55", pin); };
    };
    const auto warmup = [&](const QVariant &persistent) {
        return [&miracast, persistent] {
            if (persistent.isValid()) {
                miracast.setProperty("miracast_name", 12.5);
                miracast.setProperty("miracast_persistent", persistent);
            }
            miracast.warmup();
        };
    };
    const std::tuple<std::function<void()>, QByteArray, QByteArray, QByteArray> rows[] = {
        {[&] { miracast.requestScan(); }, "requestscan", "msg::miracast_sink_discover\nid::", ""},
        {connectTo(""), "requestconnect", "msg::miracast_session_start\nid::",
            "\ndat:json:{\"sink_mac\":\"00:11:22:33:44:55\",\"pin\":\"\"}"},
        {connectTo("%1\"\n\xc3\xa9"), "requestconnect", "msg::miracast_session_start\nid::",
            "\ndat:json:{\"sink_mac\":\"00:11:22:33:44:55\",\"pin\":\"%1\"\n\xc3\xa9\"}"},
        {[&] { miracast.requestPause(); }, "requestpause", "msg::miracast_session_pause\nid::", ""},
        {[&] { miracast.requestResume(); }, "requestresume", "msg::miracast_session_resume\nid::", ""},
        {[&] { miracast.requestDisconnect(); }, "requestdisconnect", "msg::miracast_session_stop\nid::", ""},
        {[&] { miracast.requestShutdown(); }, "requestshutdown", "msg::miracast_shutdown\nid::", ""},
        {warmup({}), "warmup",
            "msg::miracast_app_context\nid::", "\ndat:json:{\"name\":\"\",\"persistent\":\"0\"}"},
        {warmup("many"), "warmup",
            "msg::miracast_app_context\nid::", "\ndat:json:{\"name\":\"12.5\",\"persistent\":\"0\"}"},
        {warmup("-7"), "warmup",
            "msg::miracast_app_context\nid::", "\ndat:json:{\"name\":\"12.5\",\"persistent\":\"-7\"}"},
    };
    for (const auto &[request, prefix, before, after] : rows) {
        const qint64 begun = QDateTime::currentMSecsSinceEpoch();
        request();
        const QByteArray message = service.next();
        const QByteArray token = message.mid(before.size()).split('\n').first();
        EXPECT_EQ(message, before + token + after);
        EXPECT_TRUE(token.startsWith(prefix)) << token.toStdString();
        const qint64 time = token.mid(prefix.size()).toLongLong();
        EXPECT_TRUE(time >= begun && time <= QDateTime::currentMSecsSinceEpoch()) << token.toStdString();
    }
}

TEST_F(MiracastManagerTest, AnnouncesEachDeltaInTheOrderOfItsFields)
{
    const std::tuple<QByteArray, QString> deltas[] = {
        {"service_status::RUNNING\nservice_stop_reason:n:4\nsession::STOPPED\nsink_state::CONNECTING",
            "connectionState(Connecting) connectionState(2) displayState(Stopped) displayState(1) "
            "stopReason(NotSupported) stopReason(3) status(Running)"},
        {R"(sink_resolution:json:{"width":1280,"height":"720"})"
         "\nsession_id::s1\nsession::PLAYING\nsink_state::CONNECTED\n"
         R"(sink_device:json:{"type":"10-0050F204-5","mac":"a:b","name":"TV"})",
            "deviceName(\"TV\") hardwareAddress(\"a:b\") deviceType(Telephone, SmartphoneDualMode) "
            "deviceType(10, 43) connectionState(Connected) connectionState(1) "
            "deviceConnected(\"TV\", \"a:b\", Telephone, SmartphoneDualMode) "
            "deviceConnected(\"TV\", \"a:b\", 10, 43) displayState(Playing) displayState(2) "
            "sessionId(\"s1\") devicePixelSize(1280x720)"},
        {R"(sink_device:json:{"name":"TV","mac":"a:b","type":"255-0050F204-1"})",
            "deviceType(Other, Unknown) deviceType(12, 0)"},
        {R"(sink_device:json:{"name":"TV","mac":"a:b","type":"7-1"})",
            "deviceType(Unknown, Unknown) deviceType(0, 0)"},
        {R"(sink_device:json:{"name":"TV","mac":"a:b","type":"7-0050F204-9"})",
            "deviceType(Display, Unknown) deviceType(7, 0)"},
        {R"(sink_resolution:json:{"width":"abc","height":720})", "devicePixelSize(0x0)"},
        {"sink_state::DISCONNECTED\nsession::PAUSED",
            "connectionState(Disconnected) connectionState(3) deviceDisconnected() displayState(Paused) "
            "displayState(3)"},
        {"service_status::stopped\nservice_stop_reason:n:12",
            "stopReason(Internal) stopReason(6) status(Unknown)"},
        {"sink_state::CONNECTED",
            "connectionState(Connected) connectionState(1) deviceConnected(\"TV\", \"a:b\", Display, "
            "Unknown) "
            "deviceConnected(\"TV\", \"a:b\", 7, 0)"},
        {"sink_state::CONNECTING", "connectionState(Connecting) connectionState(2)"},
        {"sink_state::DISCONNECTED", "connectionState(Disconnected) connectionState(3)"},
        {"sink_state::connected\nsession::playing\nsink_device::none",
            "deviceName(\"\") hardwareAddress(\"\") deviceType(Unknown, Unknown) deviceType(0, 0) "
            "connectionState(Unknown) connectionState(0) displayState(Unknown) displayState(0)"},
    };
    MiracastManager miracast;
    SignalLog heard(&miracast);
    for (const auto &[attributes, announced] : deltas) {
        publish(attributes);
        EXPECT_EQ(heard.waitFor(1), announced) << attributes.toStdString();
    }
    EXPECT_EQ(log.take(),
        (QStringList{"\"MiracastManager::setConnectionState - Invalid connection state (connected)\"",
            "\"MiracastManager::setDisplayState - Invalid display state (playing)\""}));
    publish("session_id::s1");
    EXPECT_EQ(heard.settled(), "") << "what is taken back leaves the fields as they are";
    EXPECT_EQ(miracast.sessionId(), "s1");
}

TEST_F(MiracastManagerTest, WhatANewerReadingWithinASlotOvertakesIsAnnouncedNoFurther)
{
    MiracastManager miracast;
    SignalLog heard(&miracast);
    const QByteArray sink = R"(sink_device:json:{"name":"TV","mac":"a:b","type":"7-0050F204-1"})";
    const auto become = [&](const QByteArray &text, MiracastConnectionState::Type state) {
        publish(sink + "\nsink_state::" + text);
        EXPECT_TRUE(waitUntil([&] { return miracast.connectionState() == state; }));
    };
    QObject::connect(&miracast, &MiracastManager::deviceNameChanged, [&] {
        become("DISCONNECTED", MiracastConnectionState::Disconnected);
        become("CONNECTED", MiracastConnectionState::Connected);
    });
    publish(sink + "\nsink_state::CONNECTED");
    EXPECT_EQ(heard.waitFor(11),
        "deviceName(\"TV\") hardwareAddress(\"a:b\") deviceType(Display, Television) deviceType(7, 24) "
        "connectionState(Disconnected) connectionState(3) deviceDisconnected() "
        "connectionState(Connected) connectionState(1) "
        "deviceConnected(\"TV\", \"a:b\", Display, Television) deviceConnected(\"TV\", \"a:b\", 7, 24)");
    EXPECT_EQ(heard.settled(), "");
}

TEST_F(MiracastManagerTest, OneAnswerEndsAllRequestsOfItsToken)
{
    Service service;
    MiracastManager miracast;
    SignalLog heard(&miracast);
    QByteArray token;
    for (QByteArray other; token.isEmpty() || token != other;) { // until both are of one millisecond
        miracast.requestPause();
        miracast.requestPause();
        token = service.nextToken();
        other = service.nextToken();
    }
    answer(token, "miracast_session_pause", "n:0");
    EXPECT_EQ(heard.waitFor(2), "pauseCompleted(Success) pauseCompleted(1)");
    answer(token, "miracast_session_pause", "n:0");
    EXPECT_EQ(heard.settled(), "");
}

TEST_F(MiracastManagerTest, ACodeOfTheServiceHasItsResultAndEveryRequestItsSignal)
{
    const std::tuple<QByteArray, int, QStringList> codes[] = {{"n:-1000", 2, {}}, {":-1005", 5, {}},
        {"n:-1003", 4, {"MiracastManager:  Connection Code ( -1003 )"}},
        {"n:-1006", 0, {"MiracastManager:  Error Code ( -1006 )"}}, {"n:-1012", 8, {}}, {":none", 1, {}},
        {"n:16", 0, {"MiracastManager:  Error Code ( 16 )"}}};
    Service service;
    MiracastManager miracast;
    const std::tuple<std::function<void()>, QByteArray, QString> requests[] = {
        {[&] { miracast.requestPause(); }, "miracast_session_pause", "pause"},
        {[&] { miracast.requestResume(); }, "miracast_session_resume", "resume"},
        {[&] { miracast.requestDisconnect(); }, "miracast_session_stop", "disconnect"},
        {[&] { miracast.requestShutdown(); }, "miracast_shutdown", "shutdown"},
        {[&] { miracast.requestConnect("a", "b"); }, "miracast_session_start", "connect"},
    };
    int result = -1;
    const auto keep = [&result](MiracastResult::Type heard) { result = heard; };
    QObject::connect(&miracast, qOverload<MiracastResult::Type>(&MiracastManager::connectCompleted), keep);
    for (const auto &[code, expected, warnings] : codes) {
        miracast.requestConnect("a", "b");
        answer(service.nextToken(), "miracast_session_start", code);
        EXPECT_TRUE(waitUntil([&, &expected = expected] { return result == expected; }))
            << code.toStdString() << result;
        EXPECT_EQ(log.take(), warnings);
        result = -1;
    }
    SignalLog heard(&miracast);
    for (const auto &[request, name, signal] : requests) {
        request();
        answer(service.nextToken(), name, "n:-1012");
        EXPECT_EQ(heard.waitFor(2), signal + "Completed(DisabledByPolicy) " + signal + "Completed(8)");
    }
}

TEST_F(MiracastManagerTest, AnAnswerCompletesTheRequestOfItsTokenOnce)
{
    Service service;
    MiracastManager asking;
    MiracastManager other;
    SignalLog heard(&asking);
    SignalLog heardByOther(&other);
    asking.requestPause();
    const QByteArray token = service.nextToken();
    for (const QByteArray &id : {token.toUpper(), token + "0", QByteArray("requestpause")})
        answer(id, "miracast_session_pause", "n:0");
    EXPECT_EQ(heard.settled(), "");
    publish("");
    settle();
    publish("session_id::new\nlast_request_id::" + token + "\nlast_request::miracast_session_pause");
    EXPECT_EQ(heard.waitFor(3), "sessionId(\"new\") pauseCompleted(Success) pauseCompleted(1)");
    answer("x", "miracast_session_pause", "n:0");
    settle();
    answer(token, "miracast_session_pause", "n:0");
    EXPECT_EQ(heard.settled(), "");
    asking.requestPause();
    const QByteArray next = service.nextToken();
    answer(next, "miracast_app_context", "n:0");
    settle();
    answer(next, "miracast_session_pause", "n:-1005");
    EXPECT_EQ(heard.settled(), "") << "the answer to another kind of request takes the token away";
    EXPECT_EQ(heardByOther.settled(), "sessionId(\"new\")");
}

TEST_F(MiracastManagerTest, AScanAnnouncesEverySinkAndThenItsEnd)
{
    Service service;
    MiracastManager miracast;
    SignalLog heard(&miracast);
    const auto scan = [&](const QByteArray &error) {
        miracast.requestScan();
        answer(service.nextToken(), "miracast_sink_discover", error);
        return heard.waitFor(2);
    };
    root.place(Sinks,
        "@sinks\nb:json:{\"name\":\"B\",\"mac\":\"2\",\"type\":\"7-0050F204-1-x\"}\n"
        "a:json:{\"name\":\"A\",\"mac\":\"2\",\"type\":\"7-1\"}\nc:json:[1]\n");
    EXPECT_EQ(scan("n:0"),
        "deviceDiscovered(\"A\", \"2\", Unknown, Unknown) deviceDiscovered(\"A\", \"2\", 0, 0) "
        "deviceDiscovered(\"B\", \"2\", Display, Television) deviceDiscovered(\"B\", \"2\", 7, 24) "
        "deviceDiscovered(\"\", \"\", Unknown, Unknown) deviceDiscovered(\"\", \"\", 0, 0) "
        "scanCompleted(Success) scanCompleted(1)");
    EXPECT_EQ(scan("n:-1008"), "scanCompleted(WiFiFailure) scanCompleted(7)");
    root.place(Sinks, "@sinks\nmalformed\n");
    EXPECT_EQ(scan("n:0"), "scanCompleted(Success) scanCompleted(1)");
    root.remove(Sinks);
    EXPECT_EQ(scan("n:0"), "scanCompleted(Success) scanCompleted(1)");
    EXPECT_EQ(log.take(),
        (QStringList{"MiracastManager::readSinks - Unable to parse sinks channel.",
            "MiracastManager::readSinks - Unable to open sinks channel."}));
}

TEST_F(MiracastManagerTest, ATypeOfSinkThatIsListedHasItsCategories)
{
    Service service;
    MiracastManager miracast;
    QStringList types;
    QObject::connect(&miracast, qOverload<QString, QString, int, int>(&MiracastManager::deviceDiscovered),
        [&](const QString &, const QString &, int category, int subCategory) {
            types.append(QString("%1.%2").arg(category).arg(subCategory));
        });
    QVariantMap sinks;
    QStringList expected;
    // At the ends of each range, and beyond them.
    for (const auto &[type, category, subCategory] :
        std::initializer_list<std::tuple<const char *, int, int>>{{"1-0050F204-9", 1, 58}, {"1-x-10", 1, 0},
            {"5-x-1", 5, 19}, {"11-x-6", 11, 49}, {"11-x-0", 11, 0}, {"12-x-1", 0, 0}, {"255-x-1", 12, 0},
            {"-7-x-1", 0, 0}, {"7-x-y", 0, 0}, {"0x7-x-1", 0, 0}, {"7", 0, 0}, {"", 0, 0}}) {
        sinks.insert(QString("s%1").arg(expected.size(), 4, 10, QChar('0')), QVariantMap{{"type", type}});
        expected.append(QString("%1.%2").arg(category).arg(subCategory));
    }
    root.place(Sinks, "@sinks\n" + PpsObject::encode(sinks));
    miracast.requestScan();
    answer(service.nextToken(), "miracast_sink_discover", "n:0");
    EXPECT_TRUE(waitUntil([&] { return types.size() == expected.size(); }));
    EXPECT_EQ(types, expected);
}

TEST_F(MiracastManagerTest, OnlyAnInventoryThatSaysYesMakesItSupported)
{
    const std::tuple<QByteArray, bool> rows[] = {{"Miracast_Supported::YES", true},
        {"Miracast_Supported::yEs", true}, {"Miracast_Supported::1", false},
        {"Miracast_Supported:b:true", false}, {"miracast_supported::yes", false}, {"other::yes", false}};
    for (const auto &[attribute, supported] : rows) {
        root.place(Inventory, "@any_name\n" + attribute + "\n");
        EXPECT_EQ(MiracastManager::isSupported(), supported) << attribute.toStdString();
    }
    Service service;
    publish("sink_state::CONNECTED");
    MiracastManager miracast;
    miracast.requestScan();
    miracast.warmup();
    settle();
    EXPECT_EQ(service.messages, QByteArrayList());
    EXPECT_EQ(miracast.connectionState(), MiracastConnectionState::Unknown);
    root.place(Inventory, "malformed\n");
    EXPECT_FALSE(MiracastManager::isSupported());
    root.remove(Inventory);
    EXPECT_FALSE(MiracastManager::isSupported());
    EXPECT_EQ(log.take(),
        (QStringList{"MiracastManager: Unable to decode hw_info inventory",
            "MiracastManager: Unable to open hw_info"}));
}

TEST_F(MiracastManagerTest, ARequestThatCannotBeWrittenIsLoggedAndForgotten)
{
    MiracastManager miracast;
    const RequestError error;
    miracast.requestScan();
    EXPECT_EQ(error.number(), ENOENT);
    EXPECT_EQ(log.take(),
        QStringList{
            "\"MiracastManager::sendCommand - Unable to connect to Miracast service. (No such file or "
            "directory)\""});
    const Service service;
    miracast.requestConnect(QString(2'000'000, 'x'), "12345670");
    EXPECT_EQ(error.number(), EMSGSIZE);
    const QString warning = log.take().join(' ');
    EXPECT_TRUE(warning.startsWith("\"MiracastManager::sendCommand - Unable to write message: "
                                   "msg::miracast_session_start\\nid::requestconnect"));
    EXPECT_TRUE(warning.endsWith("xx\\\",\\\"pin\\\":\\\"...\\\"}\"")) << "no PIN in a log";
    miracast.requestScan();
    EXPECT_EQ(error.number(), 0);
    root.remove(Status);
    const MiracastManager withoutStatus;
    EXPECT_EQ(log.take(),
        QStringList{"\"MiracastManager::MiracastManager - Unable to open Miracast status channel. (No such "
                    "file or directory)\""});
}

TEST_F(MiracastManagerTest, ASlotOfAnySignalMayDestroyIt)
{
    Service service;
    root.place(Sinks, "@sinks\na:json:{\"type\":\"7-x-1\"}\nb:json:{}\n");
    // Those of everything that changes at once, two sinks, and the completion.
    constexpr int all = 15 + 4 + 2;
    for (int last = 1; last <= all; ++last) {
        publish("");
        auto *miracast = new MiracastManager;
        miracast->requestScan();
        const QByteArray token = service.nextToken();
        EXPECT_TRUE(endsWithSignal(last, miracast, [&] {
            publish(
                "sink_device:json:{\"name\":\"n\",\"mac\":\"m\",\"type\":\"7-x-1\"}\nsink_state::CONNECTED\n"
                "session::PLAYING\nsession_id::s\nsink_resolution:json:{\"width\":1,\"height\":2}\n"
                "service_stop_reason:n:0\nservice_status::RUNNING\nlast_request::miracast_sink_discover\n"
                "last_request_id::"
                + token);
        })) << last;
    }
}

} // namespace
