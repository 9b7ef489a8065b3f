#pragma once

#include <QProcess>
#include <QString>

namespace oz::tools {

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
