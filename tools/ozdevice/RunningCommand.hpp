#pragma once

#include "ozdevice/TerminationSignals.hpp"

#include <QObject>
#include <QProcess>
#include <QStringList>

#include <set>
#include <vector>

namespace oz::tools {

/*!
 * A command that runs beside a phone, together with every process that comes of it, also in the background or
 * in a group of its own: a shell that is ended takes nothing along by itself.
 */
class RunningCommand : public QObject
{
    Q_OBJECT

public:
    /*! The exit status where it cannot be started, as shells have it. */
    static constexpr int NotStarted = 127;

    /*! \a words are the program and its arguments, at least the program. */
    RunningCommand(const QStringList &words, const TerminationSignals &signals);
    /*! Ends what is left of it, as end() does, and waits for that. */
    ~RunningCommand() override;

    void start();
    /*! A child of this process that is none of the command's, as those are that were started before it. */
    void leaveAlone(qint64 process) { m_others.insert(pid_t(process)); }
    [[nodiscard]] bool isRunning() const { return m_process.state() != QProcess::NotRunning; }
    /*! Sends a signal to all of its processes; Ctrl-C reaches them by itself. */
    void pass(int signal) const;
    /*! Ends all of its processes: SIGTERM, and after a second SIGKILL. */
    void end();
    /*! Whether end() has ended it, and not it itself. */
    [[nodiscard]] bool wasEnded() const { return m_wasEnded; }

    /*! Once it has finished, or failed to start: its exit status, as shells have it. */
    [[nodiscard]] int status() const;
    /*! Why it could not be started; empty where it could. */
    [[nodiscard]] QString problem() const;

Q_SIGNALS:
    void started();
    /*! It is over, or could not be started. */
    void finished();

private:
    /*! Its processes, without those that have ended and are only waited for. */
    [[nodiscard]] std::vector<pid_t> processes() const;

    QStringList m_words;
    QProcess m_process;
    std::set<pid_t> m_others; // children of this process that are none of its own
    bool m_wasEnded = false;
};

} // namespace oz::tools
