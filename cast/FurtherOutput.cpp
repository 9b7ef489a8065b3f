#include "FurtherOutput.hpp"

#include "WlrScreen.hpp"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QStandardPaths>

#include <algorithm>

namespace oz::cast {

namespace {

constexpr QSize LargestSize(1920, 1080);
constexpr int SwayLimit = 2000; // milliseconds
const QString Program = QStringLiteral("swaymsg");

// Names the output that was made, so that one whose cast was killed is found again.
QString recordPath()
{
    return qEnvironmentVariable("XDG_RUNTIME_DIR") + QLatin1String("/ozcast-output");
}

QString recorded()
{
    QFile record(recordPath());
    return record.open(QIODevice::ReadOnly) ? QString::fromUtf8(record.readAll()) : QString();
}

bool writeRecord(const QString &name)
{
    QFile record(recordPath());
    return record.open(QIODevice::WriteOnly) && record.write(name.toUtf8()) > 0 && record.flush();
}

// What sway answers; null if it does not in time.
QJsonDocument ask(const QStringList &words)
{
    QProcess process;
    process.start(Program, QStringList(QStringLiteral("--raw")) + words);
    if (!process.waitForFinished(SwayLimit))
        return {};
    return QJsonDocument::fromJson(process.readAllStandardOutput());
}

QStringList outputs()
{
    QStringList names;
    const QJsonArray answer = ask({QStringLiteral("--type"), QStringLiteral("get_outputs")}).array();
    for (const auto &output : answer)
        names.append(output[QStringLiteral("name")].toString());
    return names;
}

// The output of before, or a new one; empty if sway makes none.
QString makeOutput()
{
    const QStringList before = outputs();
    const QString left = recorded();
    if (before.contains(left)) {
        (void)ask({QStringLiteral("output %1 enable").arg(left)});
        return left;
    }
    (void)ask({QStringLiteral("create_output")});
    const QStringList after = outputs();
    const auto made = std::find_if(
        after.cbegin(), after.cend(), [&](const QString &name) { return !before.contains(name); });
    return made != after.cend() && writeRecord(*made) ? *made : QString();
}

bool openOutput(Screen *screen)
{
    const QString name = makeOutput();
    if (name.isEmpty()) {
        screen->remark = QStringLiteral("sway makes no further output");
        return false;
    }
    if (!findWlrOutput(screen, name))
        return false;
    screen->size = LargestSize;
    screen->feed = [name, take = screen->feed](GstElement *pipeline, const VideoMode &mode) {
        (void)ask({QStringLiteral("output %1 mode --custom %2x%3")
                       .arg(name, QString::number(mode.width), QString::number(mode.height))});
        take(pipeline, mode);
    };
    return true;
}

} // namespace

bool findFurtherOutput(Screen *screen)
{
    if (qEnvironmentVariableIsEmpty("SWAYSOCK")) {
        screen->remark = QStringLiteral("only sway makes a further output, and SWAYSOCK leads to none");
        return false;
    }
    if (QStandardPaths::findExecutable(Program).isEmpty()) {
        screen->remark = QStringLiteral("a further output needs swaymsg (Debian package sway)");
        return false;
    }
    if (!findWlrScreen(screen))
        return false;
    screen->remark = QStringLiteral("a further output of sway, which is made for each cast");
    screen->open = openOutput;
    screen->awaited = QStringLiteral("making a further output");
    return true;
}

void removeFurtherOutput()
{
    const QString name = recorded();
    if (name.isEmpty())
        return;
    QProcess::startDetached(QStringLiteral("/bin/sh"),
        {QStringLiteral("-c"),
            QStringLiteral(
                "if swaymsg output \"$0\" unplug; then rm -f \"$1\"; else swaymsg output \"$0\" disable; "
                "fi >/dev/null 2>&1"),
            name, recordPath()});
}

} // namespace oz::cast
