#pragma once

#include <QByteArray>
#include <QString>

#include <sys/types.h>

namespace oz::testing {

/*!
 * The services of a phone, as a process with a device root of its own. They end with the instance, and with
 * this process however it ends, and take the root away.
 */
class PhoneProcess
{
public:
    /*! Starts \a daemon with the phone's file \a phone (empty: the installed one), and waits until everything
     * is served; throws PhoneError with what it says. */
    PhoneProcess(const QString &daemon, const QByteArray &phone);
    ~PhoneProcess();
    PhoneProcess(const PhoneProcess &) = delete;
    PhoneProcess &operator=(const PhoneProcess &) = delete;

    [[nodiscard]] const QString &root() const { return m_root; }
    [[nodiscard]] pid_t id() const { return m_pid; }
    /*! What it has logged. */
    [[nodiscard]] QString log() const;

private:
    void start(const QString &daemon, const QByteArray &phone);
    void end();

    QString m_root;
    pid_t m_pid = -1;
    int m_lifeline = -1; // where the other end sees the end of this process
    int m_log = -1;
};

} // namespace oz::testing
