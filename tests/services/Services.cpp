#include "services/Services.hpp"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <oz/DisplayTree.hpp>
#include <oz/client/DaemonClient.hpp>

#include <algorithm>
#include <cmath>

namespace oz::harness {

ControlClient::ControlClient(const QString &path) : PpsObject(path)
{
    EXPECT_TRUE(open(PpsOpenMode::PublishSubscribe)) << path.toStdString();
}

QByteArray ControlClient::ask(const QByteArray &request)
{
    EXPECT_TRUE(write(request));
    QByteArray answer;
    EXPECT_TRUE(waitUntil([&] { return !(answer = read()).isEmpty(); })) << request.toStdString();
    return answer;
}

QVariantMap ask(const QString &path, const QVariantMap &request)
{
    const QVariantMap objects = PpsObject::decode(ControlClient(path).ask(PpsObject::encode(request)));
    return objects.isEmpty() ? QVariantMap() : objects.first().toMap();
}

QVariantMap askDaemon(const QString &request, const QVariant &data)
{
    return client::DaemonClient().ask(request, data, {.runsEventLoop = true}).toMap();
}

QString daemonProblem(const QString &request, const QVariant &data)
{
    try {
        (void)askDaemon(request, data);
    } catch (const client::DaemonError &error) {
        return error.text();
    }
    return {};
}

QString simProblem(const QString &line)
{
    const QStringList words = line.split(' ');
    return daemonProblem(
        "sim", QVariantMap{{"facility", words[0]}, {"verb", words.value(1)}, {"arguments", words.mid(2)}});
}

void sim(const QString &line)
{
    EXPECT_EQ(simProblem(line), QString()) << line.toStdString();
}

QByteArray endRecording()
{
    const QVariantMap recorded = askDaemon("recorded", QVariantMap{{"from", 0}, {"end", true}});
    const QByteArray phone =
        QJsonDocument(QJsonObject::fromVariantMap(recorded.value("phone").toMap())).toJson();
    const QByteArray steps = recorded.value("steps").toStringList().join(",\n").toUtf8();
    return "{\"phone\": " + phone + ", \"steps\": [" + steps + "]}";
}

void settleDisplay(const device::DisplayInfo &display)
{
    settle();
    EXPECT_TRUE(waitUntil([&] {
        const auto displays = DisplayTree::fromAttributes(attributesOf(DisplayTree::PpsPath));
        const auto told = displays.find(display.displayId());
        if (told == displays.end() || !told->second.attached)
            return !display.isAttached();
        const QSize size = told->second.size;
        return display.isAttached()
            && display.pixelSize() == (told->second.rotation % 180 == 0 ? size : size.transposed());
    }));
    settle();
}

void playStepByStep(const QString &file, const std::function<void()> &catchUp)
{
    QFile recorded(file);
    ASSERT_TRUE(recorded.open(QIODevice::ReadOnly));
    const QJsonArray steps = QJsonDocument::fromJson(recorded.readAll())["steps"].toArray();
    ASSERT_FALSE(steps.isEmpty());
    // Its clock all but stands still, and is moved on by hand from the time of a step to that of the next.
    const QVariantMap order{{"file", file}, {"speed", 0.001}};
    EXPECT_EQ(daemonProblem("play", order), "");
    const auto look = [] { return askDaemon("scenario", QVariantMap{{"from", -1}}); };
    // It begins after it has answered.
    const auto first = std::count_if(
        steps.begin(), steps.end(), [](const QJsonValue &step) { return step["at"].toDouble() == 0; });
    EXPECT_TRUE(waitUntil([&] { return look().value("step").toInt() >= first; }));
    catchUp();
    qint64 now = 0; // in milliseconds
    for (const QJsonValue step : steps) {
        const qint64 pause = std::llround(step["at"].toDouble() * 1000) - now;
        if (pause > 0) {
            sim("clock advance " + QString::number(double(pause) / 1000));
            catchUp();
            now += pause;
        }
    }
    QVariantMap played;
    EXPECT_TRUE(waitUntil([&] {
        sim("clock advance 0.01");
        played = look();
        return played.value("state") != "playing";
    }));
    EXPECT_EQ(played.value("state"), "passed") << played.value("problem").toString().toStdString();
}

void ServicesTest::SetUp()
{
    root.place("/phone.json", m_phoneFile);
    start();
}

void ServicesTest::start(const QStringList &furtherArguments)
{
    daemon.start(OZ_DAEMON,
        QStringList{"--config", "/dev/null", "--simulated", "--phone", root.file("/phone.json")}
            + furtherArguments);
    awaitDaemon(&daemon);
}

void ServicesTest::TearDown()
{
    daemon.terminate();
    EXPECT_TRUE(daemon.state() == QProcess::NotRunning || daemon.waitForFinished());
    const QByteArrayList lines = daemon.readAllStandardError().split('\n');
    for (const QByteArray &line : lines)
        EXPECT_TRUE(line.isEmpty() || line.contains("serving")) << line.toStdString();
}

} // namespace oz::harness
