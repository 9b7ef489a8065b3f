// The program ozcast, with a display of the tests and a stand-in for the daemon.

#include "cast/CastRig.hpp"

#include <QElapsedTimer>
#include <QJsonArray>

#include <csignal>

using namespace oz::harness;

namespace {

TEST_F(CastTest, ACastIsPlayedPausedResumedAndEnded)
{
    startAgent();
    const QJsonObject hello = daemon.next("hello");
    EXPECT_EQ(hello["version"], 1);
    EXPECT_EQ(hello["missing"], "");
    EXPECT_NE(hello["encoder"], "");
    cast();
    const QJsonObject playing = play();
    EXPECT_EQ(
        playing, (QJsonObject{{"id", 1}, {"width", 1280}, {"height", 720}, {"rate", 30}, {"audio", true}}));
    EXPECT_TRUE(sink.parameters().startsWith(
        "wfd_video_formats: 28 00 01 01 00000020 00000000 00000000 00 0000 0000 00 none none\r\n"
        "wfd_audio_codecs: AAC 00000001 00\r\nwfd_presentation_URL: rtsp://127.0.0.1:"))
        << sink.parameters().toStdString();
    EXPECT_TRUE(waitUntil([&] { return sink.heard().count("KEEP_ALIVE") >= 2; }));

    daemon.send("pause", {{"id", 1}});
    daemon.next("paused");
    EXPECT_TRUE(isSilent());
    const qsizetype keyFrames = sink.keyFrames();
    daemon.send("resume", {{"id", 1}});
    play();
    EXPECT_TRUE(waitUntil([&] { return sink.keyFrames() > keyFrames; }, 1000)) << "a resumed picture is grey";

    daemon.send("end", {{"id", 1}});
    EXPECT_EQ(end(), "asked: the cast was ended");
    EXPECT_TRUE(isSilent());
    EXPECT_TRUE(waitUntil([&] { return sink.heard().contains("STOP PROJECTION"); }));
    EXPECT_TRUE(sink.heard().contains("TRIGGER TEARDOWN") && sink.heard().contains("200 TEARDOWN"));
    EXPECT_EQ(sink.packetProblem(), "");
    EXPECT_EQ(daemon.waiting(), QStringList()) << "an end is told once";
    daemon.send("cast", order(2));
    EXPECT_EQ(daemon.next("playing")["id"], 2) << "the next cast is another";
}

TEST_F(CastTest, ADisplayThatConnectsByItselfIsPlayedTo)
{
    startAgent();
    QJsonObject byItself = order();
    byItself["control-port"] = 0;
    daemon.send("cast", byItself);
    EXPECT_EQ(daemon.next("step")["text"], "waiting for the display to connect");
    sink.sound = "LPCM 00000003 00";
    sink.connectToSource(port);
    EXPECT_EQ(play()["audio"], false);
    EXPECT_FALSE(sink.parameters().contains("audio"));
    EXPECT_FALSE(sink.heard().contains("SOURCE READY"));
}

TEST_F(CastTest, ADisplayMayPauseGoOnAskForKeyFramesAndEnd)
{
    startAgent();
    cast();
    play();
    sink.request("PAUSE");
    daemon.next("paused");
    EXPECT_TRUE(isSilent());
    sink.request("PLAY");
    play();
    const qsizetype keyFrames = sink.keyFrames();
    sink.request("SET_PARAMETER", "wfd_idr_request\r\n");
    EXPECT_TRUE(waitUntil([&] { return sink.keyFrames() > keyFrames; }, 1000));
    sink.request("TEARDOWN");
    EXPECT_EQ(end(), "sink: the display ended the session");
    EXPECT_TRUE(isSilent());
    EXPECT_TRUE(sink.heard().contains("200 TEARDOWN"));
}

TEST_F(CastTest, EveryRequestOfADisplayIsAnswered)
{
    startAgent();
    cast();
    play();
    const std::vector<std::tuple<QByteArray, QByteArray, QByteArray, QString>> requests{
        {"DESCRIBE", "", "", "405 DESCRIBE"}, {"MAKE_TEA", "", "", "501 MAKE_TEA"},
        {"SETUP", "", "", "455 SETUP"}, {"PLAY", "", "0BAD", "454 PLAY"},
        {"GET_PARAMETER", "", "", "200 GET_PARAMETER"},
        {"SET_PARAMETER", "wfd_tea: 1\r\n", "", "451 SET_PARAMETER"},
        {"TEARDOWN", "", "0BAD", "454 TEARDOWN"}};
    for (const auto &[method, body, session, answer] : requests) {
        sink.request(method, body, session);
        EXPECT_TRUE(waitUntil([&, expected = answer] { return sink.heard().contains(expected); }, 1000))
            << sink.heard().join(' ').toStdString();
    }
    EXPECT_EQ(daemon.waiting(), QStringList()) << "the cast goes on";
}

struct Misbehaviour
{
    const char *name;
    const char *step;
    QByteArray sent;
    const char *end;
};

class MisbehaviourTest : public CastTest, public ::testing::WithParamInterface<Misbehaviour>
{
};

TEST_P(MisbehaviourTest, EndsTheCastInTimeWithTheFittingWord)
{
    const Misbehaviour &row = GetParam();
    sink.instead[row.step] = row.sent;
    stepLimit = 400;
    startAgent();
    QElapsedTimer time;
    time.start();
    cast();
    EXPECT_EQ(end(), row.end);
    EXPECT_LT(time.elapsed(), 5000);
    EXPECT_TRUE(isSilent());
}

const QByteArray Refusal = "RTSP/1.0 406 Not Acceptable\r\nCSeq: %1\r\n\r\n";

INSTANTIATE_TEST_SUITE_P(Each, MisbehaviourTest,
    ::testing::Values(Misbehaviour{"RefusesGreeting", "OPTIONS", Refusal,
                          "refused: the display refused, while greeting the display: 406 Not Acceptable"},
        Misbehaviour{"StallsAtGreeting", "OPTIONS", TestSink::Stall,
            "lost: the display took too long, while greeting the display"},
        Misbehaviour{"DoesNotGreet", "its OPTIONS", TestSink::Stall,
            "lost: the display took too long, while waiting for the display's greeting"},
        Misbehaviour{"RefusesParameters", "SET_PARAMETER", "RTSP/1.0 303 See Other\r\nCSeq: %1\r\n\r\n",
            "refused: the display refused, while telling the display what it will get: 303 See Other"},
        Misbehaviour{"ClosesAtCapabilities", "GET_PARAMETER", TestSink::Close,
            "lost: the display closed the connection"},
        Misbehaviour{"HasNoFormats", "GET_PARAMETER", "RTSP/1.0 200 OK\r\nCSeq: %1\r\n\r\n",
            "refused: the display has no format in common with this device"},
        Misbehaviour{"DoesNotSetUp", "its SETUP", TestSink::Stall,
            "lost: the display took too long, while waiting for the display to set up the stream"},
        Misbehaviour{"DoesNotPlay", "its PLAY", TestSink::Stall,
            "lost: the display took too long, while waiting for the display to play"},
        Misbehaviour{"SendsGarbage", "OPTIONS", "HTTP/1.1 400 Bad Request\r\n\r\n",
            "refused: the display cannot be understood: it does not speak RTSP"},
        Misbehaviour{"SendsALongHeader", "OPTIONS", "RTSP/1.0 200 OK\r\nX: " + QByteArray(20'000, 'x'),
            "refused: the display cannot be understood: its header is longer than 16 KiB"},
        Misbehaviour{"SendsALongBody", "OPTIONS",
            "RTSP/1.0 200 OK\r\nCSeq: %1\r\nContent-Length: 70000\r\n\r\n",
            "refused: the display cannot be understood: the body of its message is longer than 64 KiB"},
        Misbehaviour{
            "FallsSilent", "KEEP_ALIVE", TestSink::Stall, "lost: the display does not answer any more"}),
    [](const auto &row) { return row.param.name; });

TEST_F(CastTest, ADisplayThatDribblesIsBoundedByTheTimeOfAStep)
{
    sink.dribble = 50;
    stepLimit = 400;
    startAgent();
    cast();
    EXPECT_EQ(end(), "lost: the display took too long, while greeting the display");
}

TEST_F(CastTest, ADisplayThatDoesNotPauseOrEndIsGivenUp)
{
    sink.instead["its PAUSE"] = sink.instead["its TEARDOWN"] = TestSink::Stall;
    stepLimit = 1500;
    startAgent();
    cast();
    play();
    daemon.send("pause", {{"id", 1}});
    EXPECT_EQ(end(), "lost: the display took too long, while asking the display to pause");
    daemon.send("cast", order(2));
    play();
    daemon.send("end", {{"id", 2}});
    EXPECT_EQ(end(), "asked: the cast was ended; the display did not answer");
}

TEST_F(CastTest, StrangersAreClosedUnreadAndNobodyIsHeardOnceTheDisplayIsThere)
{
    startAgent();
    QJsonObject byItself = order();
    byItself["control-port"] = 0;
    daemon.send("cast", byItself);
    daemon.next("step");
    QTcpSocket stranger;
    stranger.bind(QHostAddress("127.0.0.3"));
    stranger.connectToHost(QHostAddress::LocalHost, port);
    EXPECT_TRUE(waitUntil([&] {
        return stranger.state() == QAbstractSocket::UnconnectedState
            && stranger.error() == QAbstractSocket::RemoteHostClosedError;
    }));
    EXPECT_EQ(stranger.readAll(), "");
    sink.connectToSource(port);
    play();
    QTcpSocket late;
    late.bind(QHostAddress(sink.address()));
    late.connectToHost(QHostAddress::LocalHost, port);
    EXPECT_TRUE(waitUntil([&] { return late.error() == QAbstractSocket::ConnectionRefusedError; }));
}

TEST_F(CastTest, WhatCannotBeginSaysWhy)
{
    startAgent();
    QTcpServer taken;
    ASSERT_TRUE(taken.listen(QHostAddress::LocalHost, port));
    cast();
    EXPECT_TRUE(end().startsWith("failed: cannot wait for the display on port " + QString::number(port)));
    taken.close();

    QJsonObject other = order(2);
    other["control-port"] = port;
    daemon.send("cast", other);
    EXPECT_EQ(end(), "lost: cannot reach 127.0.0.2: Connection refused");

    other["control-port"] = 0;
    other["connect-limit-ms"] = 200;
    daemon.send("cast", other);
    daemon.send("cast", order(3));
    EXPECT_EQ(end(), "failed: another cast is running");
    EXPECT_EQ(end(), "lost: the display did not connect within its time");
    other["address"] = "the television";
    daemon.send("cast", other);
    EXPECT_EQ(end(), "failed: the display has no address");
}

TEST_F(CastTest, AProbeTellsWhoAccepts)
{
    startAgent();
    const auto target = [](const char *address, int number) {
        return QJsonObject{{"address", address}, {"port", number}};
    };
    daemon.send("probe",
        {{"id", 7}, {"limit-ms", 500},
            {"targets",
                QJsonArray{target("127.0.0.2", sink.controlPort()), target("127.0.0.3", sink.controlPort()),
                    target("nobody", 1)}}});
    EXPECT_EQ(daemon.next("probed"), (QJsonObject{{"id", 7}, {"accepting", QJsonArray{"127.0.0.2"}}}));
}

class EndOfOzcastTest : public CastTest, public ::testing::WithParamInterface<const char *>
{
};

TEST_P(EndOfOzcastTest, EndsTheCast)
{
    const std::string how = GetParam();
    startAgent({"--child"});
    cast();
    play();
    if (how == "Terminated")
        agent.terminate();
    else if (how == "Killed")
        agent.kill();
    else
        daemon.close();
    agent.awaitEnd();
    EXPECT_TRUE(isSilent());
    EXPECT_EQ(sink.heard().contains("TRIGGER TEARDOWN"), how != "Killed");
    EXPECT_TRUE(waitUntil([&] { return !sink.isConnected(); }));
}

INSTANTIATE_TEST_SUITE_P(Each, EndOfOzcastTest, ::testing::Values("Terminated", "Killed", "DaemonGone"),
    [](const auto &row) { return row.param; });

TEST_F(CastTest, ADaemonThatWasAwayIsFoundAgain)
{
    startAgent();
    daemon.next("hello");
    cast();
    play();
    daemon.close();
    EXPECT_TRUE(waitUntil([this] { return sink.heard().contains("STOP PROJECTION"); }));
    EXPECT_EQ(daemon.next("hello")["version"], 1);
    daemon.send("cast", order(2));
    EXPECT_EQ(play()["id"], 2);
}

TEST_F(CastTest, WithoutADaemonItCastsForAPerson)
{
    const auto run = [](const QStringList &words, int *status) {
        Process program;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert("DISPLAY", "");
        environment.remove("WAYLAND_DISPLAY");
        program.run(OZ_CAST, words, environment);
        program.awaitEnd();
        *status = program.exitCode();
        return QString(program.readAll()) + program.errors();
    };
    int status = -1;
    EXPECT_TRUE(run({"--check", "--picture"}, &status).contains("screen   picture"));
    EXPECT_EQ(status, 0);
    EXPECT_TRUE(run({"--check"}, &status).contains("DISPLAY names no X server"));
    EXPECT_EQ(status, 1);
    EXPECT_TRUE(run({"--to", "a television"}, &status).contains("--to: expected ADDRESS[:PORT]"));
    EXPECT_EQ(status, 2);

    agent.run(OZ_CAST,
        {"--picture", "--port", QString::number(port), "--to",
            sink.address() + ':' + QString::number(sink.controlPort())});
    QString said;
    while (!said.contains("playing 1280x720 at 30 frames a second, with sound"))
        said += agent.line() + '\n';
    ::kill(pid_t(agent.processId()), SIGINT);
    agent.awaitEnd();
    EXPECT_EQ(agent.exitCode(), 0);
    EXPECT_TRUE(agent.readAll().endsWith("the cast was ended\n")) << said.toStdString();
    EXPECT_TRUE(sink.heard().contains("200 TEARDOWN"));
}

} // namespace
