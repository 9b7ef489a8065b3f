#include "services/Services.hpp"

#include "daemon/Daemon.hpp"

#include <oz/device/Led.hpp>
#include <oz/device/VibrationController.hpp>

#include <QCoreApplication>
#include <QDateTime>

// The phone shows what it does for its user.

using namespace oz;
using namespace oz::device;
using namespace oz::services;
using namespace oz::harness;

namespace {

using Client = ControlClient;

class ActivityTest : public DeviceTest
{
protected:
    static QVariantMap led() { return attributesOf("/pps/services/led/activity"); }
    static QVariantMap vibration() { return attributesOf("/pps/services/vibration/activity"); }
    // "red 1/3": the requests that are under way, the newest last, and with "last" the one that ended last.
    static QString text(const QVariant &request)
    {
        const QVariantMap map = request.toMap();
        return QString("%1 %2/%3 %4")
            .arg(map.value("color").toString())
            .arg(map.value("shown").toInt())
            .arg(map.value("count").toInt())
            .arg(map.value("end").toString())
            .trimmed();
    }
    static QString requests()
    {
        QStringList texts;
        for (const QVariant &request : led().value("requests").toList())
            texts.append(text(request));
        return texts.join(", ");
    }
    static QString lit()
    {
        const QVariantMap status = attributesOf("/pps/services/led/status");
        EXPECT_EQ(status.keys(), (QStringList{"blue", "green", "red"}));
        QStringList elements;
        for (auto element = status.cbegin(); element != status.cend(); ++element) {
            if (*element == "on")
                elements.append(element.key());
            else
                EXPECT_EQ(*element, "off");
        }
        return elements.join('+');
    }
    static JsonNode phone(const QByteArray &on, const QByteArray &off)
    {
        return JsonNode::parse(
            "{\"led\": {\"on-seconds\": " + on + ", \"off-seconds\": " + off + "}}", "phone.json");
    }
};

TEST_F(ActivityTest, TheLedFlashesAsOftenAsItIsAskedToAndSaysForWhom)
{
    const Daemon daemon(Configuration::simulated(), phone("0.1", "0.1"));
    QStringList shown;
    PpsObject status("/pps/services/led/status");
    QObject::connect(&status, &PpsObject::readyRead, [&] {
        (void)status.read();
        shown.append(lit());
    });
    ASSERT_TRUE(status.open(PpsOpenMode::Subscribe));
    Led magenta(LedColor::Magenta);
    SignalLog heard(&magenta);
    magenta.flash(3);
    EXPECT_EQ(heard.waitFor(4), "active(true) remainingFlashCount(2) remainingFlashCount(1) active(false)");
    EXPECT_TRUE(waitUntil([&] { return shown.size() == 7; }));
    EXPECT_EQ(shown, (QStringList{"", "blue+red", "", "blue+red", "", "blue+red", ""}));
    EXPECT_EQ(text(led().value("last")), "magenta 3/3 done");
    EXPECT_EQ(led().value("last").toMap().value("process"), QCoreApplication::applicationPid());
    EXPECT_EQ(led().value("flashes"), 3);

    magenta.flash();
    EXPECT_TRUE(waitUntil([&] { return led().value("flashes").toInt() > 4; }));
    magenta.setColor(LedColor::Cyan);
    EXPECT_TRUE(waitUntil([&] { return lit() == "blue+green"; }));
    magenta.cancel();
    EXPECT_TRUE(waitUntil([&] { return requests().isEmpty(); }));
    EXPECT_TRUE(text(led().value("last")).endsWith("/-1 cancelled"));
    EXPECT_EQ(lit(), "");
}

TEST_F(ActivityTest, TheNewestRequestHasTheLedAndTheOneBeforeGoesOnAfterIt)
{
    const Daemon daemon(Configuration::simulated(), phone("60", "0.02"));
    const QString control = "/pps/services/led/control";
    const auto request = [](const char *color, int count) {
        return QByteArray("msg::requestLED\nid::1\ndat:json:{\"color\":\"") + color
            + "\",\"blinkCount\":" + QByteArray::number(count) + "}\n";
    };
    const QByteArray done = "@control\nid::1\nres::requestLED\n";
    Client first(control);
    EXPECT_EQ(first.ask(request("red", -1)), done);
    EXPECT_EQ(lit(), "red");
    EXPECT_EQ(requests(), "red 1/-1");
    {
        Client second(control);
        EXPECT_EQ(second.ask(request("red", 5)), done) << "the same id on another connection is another one";
        EXPECT_EQ(lit(), "") << "dark in between, as one red could not be told from the other";
        EXPECT_TRUE(waitUntil([] { return lit() == "red"; }));
        EXPECT_EQ(requests(), "red 1/-1, red 1/5");
        EXPECT_EQ(second.ask(request("white", 2)), done);
        EXPECT_EQ(text(led().value("last")), "red 1/5 replaced");
        EXPECT_TRUE(waitUntil([] { return lit() == "blue+green+red"; }));
        Client third(control);
        EXPECT_EQ(third.ask("msg::cancelLED\nid::1\n"),
            "@control\nerr:n:2\nerrstr::this client has no request '1' under way\nid::1\nres::cancelLED\n");
        EXPECT_EQ(first.ask("msg::cancelLED\nid::2\n").contains("err:n:2"), true);
        EXPECT_EQ(lit(), "blue+green+red");
        EXPECT_EQ(requests(), "red 1/-1, white 1/2");
    }
    EXPECT_TRUE(waitUntil([] { return lit() == "red"; }))
        << "a connection that ends takes its requests along";
    EXPECT_EQ(text(led().value("last")), "white 1/2 client gone");
    EXPECT_EQ(requests(), "red 2/-1");
    EXPECT_EQ(first.ask(request("green", 1)), done);
    EXPECT_TRUE(waitUntil([] { return lit() == "green"; }));
    EXPECT_EQ(requests(), "");
    EXPECT_EQ(text(led().value("last")), "green 1/1 done");
    sim("led answer-late 20");
    EXPECT_TRUE(first.write(request("red", -1)));
    first.close();
    settle();
    EXPECT_EQ(lit(), "green") << "the last flash is as long as the others";
    sim("led answer-late 40");
    EXPECT_EQ(Client(control).ask(request("blue", 1)), done);
    EXPECT_FALSE(requests().contains("red")) << "who is gone meanwhile gets nothing";
}

TEST_F(ActivityTest, WhatMeansNothingToTheLedIsAnsweredWithAnErrorAndHarmsNobody)
{
    auto daemon = std::make_unique<Daemon>(Configuration::simulated(), phone("60", "0.02"));
    Client client("/pps/services/led/control");
    const auto ask = [](const char *json) {
        return QByteArray("msg::requestLED\nid::7\ndat:json:") + json + '\n';
    };
    const QString count = "'blinkCount' is a whole number from 1 to 2147483647, or -1, not ";
    const QString color = "'color' is one of red, green, blue, yellow, cyan, magenta, white, not ";
    const std::tuple<QByteArray, QString> rows[] = {
        {"msg::cancelLED\n", "a request has an 'id' of 1 to 64 characters"},
        {"msg::blinkLED\nid::7\n", "unknown request 'blinkLED'; known are requestLED, cancelLED"},
        {"msg::requestLED\nid::7\n", color + "''"},
        {"id::7\nmsg::requestLED\ndat::" + QByteArray(17'000, 'x') + '\n',
            "a message has at most 16384 bytes"},
        {ask(R"({"color":"Red","blinkCount":1})"), color + "'Red'"},
        {ask(R"({"color":"red"})"), count + "''"},
        {ask(R"({"color":"red","blinkCount":0})"), count + "'0'"},
        {ask(R"({"color":"red","blinkCount":-2})"), count + "'-2'"},
        {ask(R"({"color":"red","blinkCount":1.5})"), count + "'1.5'"},
        {ask(R"({"color":"red","blinkCount":3e9})"), count + "'3e+09'"},
        {ask(R"({"color":"red","blinkCount":"3"})"), count + "'3'"},
    };
    for (const auto &[request, problem] : rows) {
        const QVariantMap answer = PpsObject::decode(client.ask(request)).first().toMap();
        EXPECT_EQ(answer.value("errstr"), problem);
        EXPECT_EQ(answer.value("err"), EINVAL);
    }
    EXPECT_EQ(led(), (QVariantMap{{"requests", QVariantList()}, {"flashes", 0}}));
    EXPECT_EQ(root.mode("/pps/services/led/activity"), 0640u) << "it names processes";
    for (int i = 0; i < 50; ++i) {
        EXPECT_FALSE(client
                         .ask("msg::requestLED\nid:n:" + QByteArray::number(i)
                             + "\ndat:json:{\"color\":\"blue\",\"blinkCount\":2147483647}\n")
                         .contains("err"));
    }
    EXPECT_TRUE(Client("/pps/services/led/control")
                    .ask(ask(R"({"color":"red","blinkCount":1})"))
                    .contains("err:n:16\nerrstr::this user has 50 requests under way"));
    EXPECT_FALSE(client.ask("msg::requestLED\nid:n:0\ndat:json:{\"color\":\"blue\",\"blinkCount\":9}\n")
                     .contains("err"))
        << "a request may replace another";
    EXPECT_TRUE(waitUntil([] { return lit() == "blue"; }));
    daemon.reset();
    EXPECT_EQ(lit(), "") << "without the service there is no light";
}

TEST_F(ActivityTest, TheMotorRunsForItsTimeOrUntilItIsToldOtherwise)
{
    const Daemon daemon(Configuration::simulated(), JsonNode::emptyMap());
    EXPECT_EQ(vibration(), (QVariantMap{{"running", false}, {"runs", 0}}));
    const auto last = [](const char *name) { return vibration().value("last").toMap().value(name); };
    VibrationController motor;
    EXPECT_TRUE(motor.isSupported());
    const QDateTime begun = QDateTime::currentDateTimeUtc();
    motor.start(30, 40);
    EXPECT_TRUE(waitUntil([&] { return last("end") == "done"; })) << "it runs on when the client is gone";
    EXPECT_EQ(std::tuple(last("duration"), last("intensity")), std::tuple(40, 100));
    EXPECT_TRUE(
        last("ran").toInt() >= 40 && last("ran").toInt() <= begun.msecsTo(QDateTime::currentDateTimeUtc()));
    EXPECT_GE(QDateTime::fromString(last("started").toString(), Qt::ISODateWithMs), begun);

    motor.start(1, 60'000);
    EXPECT_TRUE(waitUntil([] { return vibration().value("running").toBool(); }));
    motor.start();
    EXPECT_TRUE(waitUntil([&] { return last("end") == "replaced"; }));
    EXPECT_EQ(last("duration"), 60'000);
    EXPECT_EQ(vibration().value("run").toMap().value("duration"), 2147483647);
    motor.stop();
    EXPECT_TRUE(waitUntil([&] { return last("end") == "stopped"; }));
    EXPECT_FALSE(vibration().contains("run"));

    Client client("/pps/services/vibrator");
    EXPECT_EQ(
        client.ask("duration:n:60000\nintensity:n:7\n"), "@vibrator\nduration:n:60000\nintensity:n:7\n");
    EXPECT_EQ(vibration().value("run").toMap().value("intensity"), 7);
    const std::tuple<QByteArray, const char *> rows[] = {
        {"rubbish", "line 1: neither 'name:qualifier:value' nor '-name'"},
        {"intensity:n:1\n", "'duration' is a whole number from 0 to 2147483647, not ''"},
        {"duration:n:2147483648\nintensity:n:1\n",
            "'duration' is a whole number from 0 to 2147483647, not '2147483648'"},
        {"duration:n:1\nintensity:n:101\n", "'intensity' is a whole number from 0 to 100, not '101'"},
        {"duration:n:1\nintensity::full\n", "'intensity' is a whole number from 0 to 100, not 'full'"},
    };
    for (const auto &[request, problem] : rows)
        EXPECT_EQ(client.ask(request), QByteArray("@vibrator\nerr:n:22\nerrstr::") + problem + '\n');
    EXPECT_EQ(vibration().value("runs"), 4);
    EXPECT_TRUE(vibration().value("running").toBool());
    sim("vibration present off");
    EXPECT_FALSE(motor.isSupported());
    EXPECT_EQ(last("intensity"), 7);
    EXPECT_FALSE(vibration().value("running").toBool());
    sim("vibration present on");
    EXPECT_TRUE(motor.isSupported());
}

} // namespace
