#pragma once

#include <QProcess>
#include <QString>
#include <QVariant>

#include <functional>

#include <memory>

namespace oz::tools {

/*! The daemon's control object; where it can be opened, the daemon is ready. */
extern const char *const DaemonControlPath;

/*!
 * Sends a request ("sim", "describe") to the daemon under the device root and waits for the answer, whose
 * "dat" it gives; throws CommandError where there is no daemon or the request is refused.
 */
[[nodiscard]] QVariant askDaemon(const QString &message, const QVariant &data = {});

/*! Whether a daemon under the device root is ready within the time. */
[[nodiscard]] bool waitForDaemon(
    int milliseconds, const std::function<bool()> &goOn = [] { return true; });

/*! A simulated phone with a device root of its own, which is this process's root too. It ends with the
 * instance. */
class PrivatePhone
{
public:
    /*! Starts it with the phone's file \a phoneFile (empty: the default one); throws CommandError. */
    explicit PrivatePhone(const QString &phoneFile);
    ~PrivatePhone();
    PrivatePhone(const PrivatePhone &) = delete;
    PrivatePhone &operator=(const PrivatePhone &) = delete;

private:
    QString m_root;
    QProcess m_daemon;
};

} // namespace oz::tools
