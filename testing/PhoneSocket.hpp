#pragma once

#include <QByteArray>
#include <QString>

#include <chrono>

namespace oz::testing {

/*! A connection with a service of a phone. Each call gives an errno. */
class PhoneSocket
{
public:
    PhoneSocket() = default;
    ~PhoneSocket();
    PhoneSocket(const PhoneSocket &) = delete;
    PhoneSocket &operator=(const PhoneSocket &) = delete;

    [[nodiscard]] int connect(const QString &path);
    [[nodiscard]] int send(const QByteArray &message) const;
    /*! Waits for a message; where \a runsLoop, the event loop of a thread that has one runs meanwhile. */
    [[nodiscard]] int receive(QByteArray *message, std::chrono::milliseconds limit, bool runsLoop) const;

private:
    int m_fd = -1;
};

} // namespace oz::testing
