#pragma once

#include <QByteArray>
#include <QString>

#include <sys/types.h>

namespace oz::client {

/*!
 * The services of a simulated phone, as a process with a device root of its own. They end with the instance,
 * and with this process however it ends, and take the root away.
 */
class PrivateDaemon
{
public:
    struct Setup
    {
        QString program; //!< ozdeviced
        QString phoneFile{}; //!< the phone's file; empty for the installed one
        QByteArray phone{}; //!< the content of a file, in the place of phoneFile
        bool forwardsLog = false; //!< to this process's standard error, instead of keeping it for log()
    };

    /*! Starts the daemon and waits until everything is served; throws DaemonError. */
    explicit PrivateDaemon(const Setup &setup);
    ~PrivateDaemon();
    PrivateDaemon(const PrivateDaemon &) = delete;
    PrivateDaemon &operator=(const PrivateDaemon &) = delete;

    [[nodiscard]] const QString &root() const { return m_root; }
    [[nodiscard]] pid_t id() const { return m_pid; }
    /*! True while it runs. */
    [[nodiscard]] bool isRunning() const;
    /*! Its log so far. */
    [[nodiscard]] QString log() const;

private:
    void start(const Setup &setup);
    void end();

    QString m_root;
    pid_t m_pid = -1;
    int m_log = -1;
};

} // namespace oz::client
