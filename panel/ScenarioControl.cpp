#include "ScenarioControl.hpp"

#include "facilities/InstalledScenarios.hpp"

#include <QCoreApplication>
#include <QDir>
#include <QStandardPaths>

#include <utility>

ScenarioControl::ScenarioControl(QObject *parent) : QObject(parent)
{
    for (const QStringList &row : oz::tools::installedScenarios()) {
        m_installed.append(
            QVariantMap{{QStringLiteral("name"), row[0]}, {QStringLiteral("description"), row[1]},
                {QStringLiteral("file"), oz::tools::scenarioFile(row[0])}});
    }
    connect(&m_follower, &oz::client::ScenarioFollower::told, this, &ScenarioControl::update);
    m_recorder.setProcessChannelMode(QProcess::MergedChannels);
    connect(&m_recorder, &QProcess::stateChanged, this, &ScenarioControl::recordingChanged);
    connect(&m_recorder, &QProcess::finished, this, [this] {
        // The command prints where the recording is, or what is wrong.
        QString report = QString::fromUtf8(m_recorder.readAll()).trimmed();
        report.remove(QLatin1String("ozdevice: "));
        Q_EMIT recorded(report);
    });
    connect(&m_recorder, &QProcess::errorOccurred, this, [this](QProcess::ProcessError error) {
        if (error == QProcess::FailedToStart)
            Q_EMIT recorded(m_recorder.errorString());
    });
}

ScenarioControl::~ScenarioControl()
{
    m_recorder.disconnect(this);
    stopRecording();
    m_recorder.waitForFinished();
}

QString ScenarioControl::text(const char *key) const
{
    return m_told.value(QLatin1String(key)).toString();
}

QString ScenarioControl::state() const
{
    const QString state = text("state");
    const bool isPaused = m_told.value(QStringLiteral("paused")).toBool();
    return isPaused && state == u"playing" ? QStringLiteral("paused") : state;
}

void ScenarioControl::order(const QString &request, const QVariantMap &data)
{
    oz::client::DaemonClient().askLater(request, data.isEmpty() ? QVariant() : data, this,
        [this](const QVariant &, const std::optional<oz::client::DaemonError> &error) {
            if (error)
                Q_EMIT refused(error->text());
        });
}

void ScenarioControl::play(const QString &file, const QString &speed, bool keepGoing)
{
    order(QStringLiteral("play"),
        {{QStringLiteral("file"), pathOf(file)}, {QStringLiteral("speed"), speed},
            {QStringLiteral("keep-going"), keepGoing}});
}

void ScenarioControl::setSpeed(const QString &speed)
{
    order(QStringLiteral("scenario-speed"), {{QStringLiteral("speed"), speed}});
}

void ScenarioControl::update(const QVariantMap &told)
{
    m_told = told;
    if (const int number = told.value(QStringLiteral("number")).toInt();
        std::exchange(m_number, number) != number) {
        m_met = m_failed = 0;
        Q_EMIT restarted();
    }
    const QVariantList entries = m_told.take(QStringLiteral("entries")).toList();
    for (const QVariant &each : entries) {
        const QVariantMap entry = each.toMap();
        const auto textOf = [&](const char *key) { return entry.value(QLatin1String(key)).toString(); };
        const QString outcome = textOf("outcome");
        m_met += outcome == u"passed";
        m_failed += outcome == u"failed";
        const double seconds = entry.value(QStringLiteral("time")).toDouble();
        Q_EMIT stepped(
            tr("%1 s").arg(QLocale().toString(seconds, 'f', 1)), textOf("text"), outcome, textOf("detail"));
    }
    Q_EMIT changed();
}

QString ScenarioControl::recording() const
{
    return m_recorder.state() == QProcess::NotRunning ? QString() : m_recording;
}

void ScenarioControl::record(const QString &file)
{
    if (m_recorder.state() != QProcess::NotRunning)
        return;
    m_recording = pathOf(file);
    // The command does the recording.
    const QString here = QCoreApplication::applicationDirPath();
    const QString command =
        QStandardPaths::findExecutable(QStringLiteral("ozdevice"), {here, here + QLatin1String("/../bin")});
    m_recorder.start(command, {QStringLiteral("record"), m_recording});
}

void ScenarioControl::stopRecording()
{
    m_recorder.terminate();
}

QString ScenarioControl::pathOf(const QString &typed)
{
    QString path = typed.startsWith(QLatin1String("file:")) ? QUrl(typed).toLocalFile() : typed.trimmed();
    if (path.startsWith(QLatin1String("~/")))
        path.replace(0, 1, QDir::homePath());
    return QFileInfo(path).absoluteFilePath();
}
