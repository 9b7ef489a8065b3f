#pragma once

#include <QString>

#include <stdexcept>

namespace oz::client {

/*! Why the daemon did not do what it was asked for. */
class DaemonError : public std::runtime_error
{
public:
    enum Kind {
        Unreachable, //!< nobody serves the control object, or it is another user's
        Lost, //!< the daemon ended, or closed the connection, before it answered
        Silent, //!< no answer came within the limit
        Refused, //!< the daemon answered with an error
    };

    DaemonError(Kind kind, int error, const QString &text)
        : std::runtime_error(text.toStdString()), m_kind(kind), m_error(error)
    {
    }

    [[nodiscard]] Kind kind() const { return m_kind; }
    /*! The errno: the system's, or that of the daemon's answer. */
    [[nodiscard]] int error() const { return m_error; }
    [[nodiscard]] QString text() const { return QString::fromUtf8(what()); }

private:
    Kind m_kind;
    int m_error;
};

} // namespace oz::client
