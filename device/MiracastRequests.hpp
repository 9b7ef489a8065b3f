#pragma once

#include <QString>
#include <QStringList>

namespace oz::device {

/*! One kind of request of Miracast: the prefix of its token, and its message, of which %1 is the token. */
struct MiracastRequest
{
    const char *prefix;
    const char *message;
    bool hasSecret = false; //!< %3 must not be logged
};

namespace MiracastRequestKind {
inline constexpr MiracastRequest Scan{"requestscan", "msg::miracast_sink_discover\nid::%1"};
inline constexpr MiracastRequest Connect{"requestconnect",
    "msg::miracast_session_start\nid::%1\ndat:json:{\"sink_mac\":\"%2\",\"pin\":\"%3\"}", true};
inline constexpr MiracastRequest Pause{"requestpause", "msg::miracast_session_pause\nid::%1"};
inline constexpr MiracastRequest Resume{"requestresume", "msg::miracast_session_resume\nid::%1"};
inline constexpr MiracastRequest Disconnect{"requestdisconnect", "msg::miracast_session_stop\nid::%1"};
inline constexpr MiracastRequest Shutdown{"requestshutdown", "msg::miracast_shutdown\nid::%1"};
inline constexpr MiracastRequest Warmup{
    "warmup", "msg::miracast_app_context\nid::%1\ndat:json:{\"name\":\"%2\",\"persistent\":\"%3\"}"};
} // namespace MiracastRequestKind

/*! The requests of one object: written without waiting, and known by their tokens until they are answered. */
class MiracastRequests
{
public:
    /*! Before, requests are dropped silently. */
    void setReady() { m_ready = true; }

    /*! Sends a request, with its values as they stand. One that cannot be written is logged and dropped. */
    void send(const MiracastRequest &request, const QString &first = {}, const QString &second = {});

    /*! Takes the request with \a token as answered; false if no such request waits. */
    [[nodiscard]] bool takeAnswered(const QString &token) { return m_pending.removeAll(token) > 0; }

private:
    [[nodiscard]] static QString getRequestToken(const QString &prefix);
    void sendCommand(const QString &token, const QString &message, const QString &logged);

    QStringList m_pending; // the tokens of requests that were sent and are not answered yet
    bool m_ready = false;
};

} // namespace oz::device
