#pragma once

#include <QByteArray>
#include <QObject>
#include <QString>
#include <QStringList>

#include <sys/types.h>

namespace oz::services {

/*!
 * A program that is started for the daemon and ends with it: it is sent SIGTERM when the daemon dies, however
 * it dies. Its standard output and error are the daemon's.
 */
class ChildProcess : public QObject
{
    Q_OBJECT

public:
    ChildProcess() = default;
    /*! Sends SIGTERM to a program that runs, and SIGKILL to one that still runs three seconds later. Nobody
     * waits for that. */
    ~ChildProcess() override;

    /*! Starts the \a program where none runs, with a \a variable ("NAME=VALUE") in its environment; 0 or an
     * errno. */
    [[nodiscard]] int start(const QString &program, const QStringList &arguments, const QByteArray &variable);
    /*! Its process; 0 while none runs. */
    [[nodiscard]] pid_t pid() const;
    /*! Sends SIGKILL. */
    void kill();

Q_SIGNALS:
    /*! It has ended, in words for a person: "it ended with status 3". */
    void ended(const QString &how);

private:
    class Running;
    Running *m_running = nullptr;
};

} // namespace oz::services
