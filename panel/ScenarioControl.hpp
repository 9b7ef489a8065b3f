#pragma once

#include <oz/client/ScenarioFollower.hpp>

#include <QProcess>
#include <QUrl>
#include <QVariantList>
#include <QtQml/qqmlregistration.h>

/*! Plays scenarios on the simulated phone, follows the one that plays, also if another client began it, and
 * records. No call waits. */
class ScenarioControl : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    /*! The installed scenarios: maps with "name", "description" and "file". */
    Q_PROPERTY(QVariantList installed READ installed CONSTANT)
    /*! "playing", "paused", "passed", "failed" or "stopped"; empty if none has been played. */
    Q_PROPERTY(QString state READ state NOTIFY changed)
    /*! The file and the description of the scenario that plays or was played last. */
    Q_PROPERTY(QString file READ file NOTIFY changed)
    Q_PROPERTY(QString description READ description NOTIFY changed)
    /*! The number of the step under way, of `steps`; 0 for none. */
    Q_PROPERTY(int step READ step NOTIFY changed)
    Q_PROPERTY(int steps READ steps NOTIFY changed)
    /*! How much of it is done. */
    Q_PROPERTY(int percent READ percent NOTIFY changed)
    /*! How fast the phone's time goes: a number, or "max". */
    Q_PROPERTY(QString speed READ speed NOTIFY changed)
    /*! The number of expectations that were met, and of steps that failed. */
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
    [[nodiscard]] int percent() const { return m_told.value(QStringLiteral("percent")).toInt(); }
    [[nodiscard]] QString speed() const { return text("speed"); }
    [[nodiscard]] int met() const { return m_met; }
    [[nodiscard]] int failed() const { return m_failed; }
    [[nodiscard]] QString problem() const { return text("problem"); }
    [[nodiscard]] QString recording() const;

    /*! Plays a file at a speed ("1", "60", "max"); with \a keepGoing, failed steps do not end it. */
    Q_INVOKABLE void play(const QString &file, const QString &speed, bool keepGoing);
    Q_INVOKABLE void pause() { order(QStringLiteral("pause-scenario")); }
    Q_INVOKABLE void resume() { order(QStringLiteral("resume-scenario")); }
    Q_INVOKABLE void stop() { order(QStringLiteral("stop-scenario")); }
    Q_INVOKABLE void setSpeed(const QString &speed);
    /*! Records what the phone does into a file, until stopRecording(). */
    Q_INVOKABLE void record(const QString &file);
    Q_INVOKABLE void stopRecording();
    /*! The absolute path for one that a person typed; "~" is the home folder. */
    Q_INVOKABLE static QString pathOf(const QString &typed);

Q_SIGNALS:
    void changed();
    void recordingChanged();
    /*! A step was reached at a \a time ("12.3 s"), with the outcome "done", "waiting", "passed", "failed" or
     * "said". */
    void stepped(const QString &time, const QString &text, const QString &outcome, const QString &detail);
    /*! Another scenario has begun. */
    void restarted();
    /*! The daemon refused a call. */
    void refused(const QString &problem);
    /*! A recording has ended: its file, or why it failed. */
    void recorded(const QString &report);

private:
    [[nodiscard]] QString text(const char *key) const;
    void order(const QString &request, const QVariantMap &data = {});
    void update(const QVariantMap &told);

    oz::client::ScenarioFollower m_follower;
    QVariantList m_installed;
    QVariantMap m_told;
    int m_met = 0;
    int m_failed = 0;
    int m_number = 0;
    QProcess m_recorder;
    QString m_recording;
};
