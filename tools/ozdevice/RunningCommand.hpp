#pragma once

#include "ozdevice/TerminationSignals.hpp"

#include <QObject>
#include <QProcess>
#include <QStringList>

#include <set>
#include <vector>

namespace oz::tools {

/*! A command that runs on a phone, with all processes that it starts, also in the background or in a
 * process group of their own: a shell that ends does not end them. */
class RunningCommand : public QObject
{
    Q_OBJECT

public:
    /*! The exit status of a command that cannot be started, as in shells. */
    static constexpr int NotStarted = 127;

    RunningCommand(const QStringList &words, const TerminationSignals &signals);
    /*! Ends the remaining processes as end() does, and waits for them. */
    ~RunningCommand() override;

    void start();
    /*! Excludes a child of this process from those of the command, as start() does with the children that
     * exist before it. */
    void exclude(qint64 process) { m_others.insert(pid_t(process)); }
    [[nodiscard]] bool isRunning() const { return m_process.state() != QProcess::NotRunning; }
    /*! Sends a signal to all of its processes. Ctrl-C in a terminal reaches them without this. */
    void sendSignal(int signal) const;
    /*! Ends all of its processes with SIGTERM, and after a second with SIGKILL. */
    void end();
    /*! Returns true if end() has ended it. */
    [[nodiscard]] bool wasEnded() const { return m_wasEnded; }

    /*! Returns the exit status of a command that has finished or failed to start, as shells do. */
    [[nodiscard]] int status() const;
    /*! The reason why it could not be started; empty if it was. */
    [[nodiscard]] QString problem() const;

Q_SIGNALS:
    void started();
    /*! The command has ended or could not be started. */
    void finished();

private:
    /*! Returns its processes, without zombies. */
    [[nodiscard]] std::vector<pid_t> processes() const;

    QStringList m_words;
    QProcess m_process;
    std::set<pid_t> m_others; // children of this process that do not belong to the command
    bool m_wasEnded = false;
};

} // namespace oz::tools
