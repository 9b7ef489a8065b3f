#pragma once

#include <oz/client/ScenarioFollower.hpp>

#include <QProcess>
#include <QUrl>
#include <QVariantList>
#include <QtQml/qqmlregistration.h>

/*! Plays scenarios on the simulated phone, follows the one that plays, whoever began it, and records. Never
 * waits. */
class ScenarioControl : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    /*! Those that are installed: maps with "name", "description" and "file". */
    Q_PROPERTY(QVariantList installed READ installed CONSTANT)
    /*! "playing", "paused", "passed", "failed" or "stopped"; empty where none has been played. */
    Q_PROPERTY(QString state READ state NOTIFY changed)
    /*! The file of the one that plays or was played last; and the line about it. */
    Q_PROPERTY(QString file READ file NOTIFY changed)
    Q_PROPERTY(QString description READ description NOTIFY changed)
    /*! The number of the step that is under way, of so many; 0 for none. */
    Q_PROPERTY(int step READ step NOTIFY changed)
    Q_PROPERTY(int steps READ steps NOTIFY changed)
    /*! The phone's time to the real one: a number, or "max". */
    Q_PROPERTY(QString speed READ speed NOTIFY changed)
    /*! Expectations that were met, and steps that failed. */
    Q_PROPERTY(int met READ met NOTIFY changed)
    Q_PROPERTY(int failed READ failed NOTIFY changed)
    /*! Why it failed or was stopped. */
    Q_PROPERTY(QString problem READ problem NOTIFY changed)
    /*! The file that is being recorded; empty while none is. */
    Q_PROPERTY(QString recording READ recording NOTIFY recordingChanged)

public:
    explicit ScenarioControl(QObject *parent = nullptr);
    ~ScenarioControl() override;

    [[nodiscard]] QVariantList installed() const { return m_installed; }
    [[nodiscard]] QString state() const;
    [[nodiscard]] QString file() const { return text("file"); }
    [[nodiscard]] QString description() const { return text("description"); }
    [[nodiscard]] int step() const { return m_told.value(QStringLiteral("step")).toInt(); }
    [[nodiscard]] int steps() const { return m_told.value(QStringLiteral("steps")).toInt(); }
    [[nodiscard]] QString speed() const { return text("speed"); }
    [[nodiscard]] int met() const { return m_met; }
    [[nodiscard]] int failed() const { return m_failed; }
    [[nodiscard]] QString problem() const { return text("problem"); }
    [[nodiscard]] QString recording() const;

    /*! Plays a file, at a speed ("1", "60", "max"), past steps that fail where it is to keep going. */
    Q_INVOKABLE void play(const QString &file, const QString &speed, bool keepGoing);
    Q_INVOKABLE void pause() { order(QStringLiteral("pause-scenario")); }
    Q_INVOKABLE void resume() { order(QStringLiteral("resume-scenario")); }
    Q_INVOKABLE void stop() { order(QStringLiteral("stop-scenario")); }
    Q_INVOKABLE void setSpeed(const QString &speed);
    /*! Begins to record what the phone does into a file, until stopRecording(). */
    Q_INVOKABLE void record(const QString &file);
    Q_INVOKABLE void stopRecording();
    /*! The path that a person typed, as a whole one; "~" is the home folder. */
    Q_INVOKABLE static QString pathOf(const QString &typed);

Q_SIGNALS:
    void changed();
    void recordingChanged();
    /*! A step was done: what it was, when ("12.3 s"), and "done", "waiting", "passed", "failed" or "said". */
    void stepped(const QString &time, const QString &text, const QString &outcome, const QString &detail);
    /*! Another scenario is followed from its beginning. */
    void restarted();
    /*! What was asked for is refused. */
    void refused(const QString &problem);
    /*! What has been recorded, or why it has not. */
    void recorded(const QString &report);

private:
    [[nodiscard]] QString text(const char *key) const;
    void order(const QString &request, const QVariantMap &data = {});
    void take(const QVariantMap &told);

    oz::client::ScenarioFollower m_follower;
    QVariantList m_installed;
    QVariantMap m_told;
    int m_met = 0;
    int m_failed = 0;
    int m_number = 0;
    QProcess m_recorder;
    QString m_recording;
};
