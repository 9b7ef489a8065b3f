#pragma once

#include <QDBusConnection>
#include <QDBusUnixFileDescriptor>
#include <QEventLoop>
#include <QObject>
#include <QSize>
#include <QVariantMap>

#include <chrono>
#include <functional>
#include <optional>

namespace oz::cast {

/*!
 * A screen that the desktop portal lets this process take, as version 4 of its interface ScreenCast
 * describes. The session ends with this object and with its process.
 */
class PortalSession : public QObject
{
    Q_OBJECT

public:
    /*! The bit of a whole screen among the types of sources. */
    static constexpr uint Monitor = 1;

    /*! What PipeWire gives the pictures by. */
    struct Stream
    {
        QDBusUnixFileDescriptor remote; //!< a connection to PipeWire that sees nothing else
        uint node = 0;
        QSize size; //!< empty where the portal does not tell it
    };

    explicit PortalSession(const QDBusConnection &bus);
    ~PortalSession() override;

    /*! A connection to the session's bus of its own; not connected, if there is none. */
    [[nodiscard]] static QDBusConnection connectToBus();
    /*! A property of the interface; nothing where there is no portal, or none that casts screens. */
    [[nodiscard]] static std::optional<uint> property(const QDBusConnection &bus, const QString &name);

    /*!
     * Asks for a screen, and waits \a limit at most for the person in front of it. \a token is what an
     * earlier permission left, and becomes what this one leaves. Without a stream, problem() says why.
     */
    [[nodiscard]] std::optional<Stream> open(QString *token, std::chrono::milliseconds limit);
    [[nodiscard]] const QString &problem() const { return m_problem; }

Q_SIGNALS:
    /*! The portal has ended it. */
    void closed();

private Q_SLOTS:
    void onResponse(uint code, const QVariantMap &results);

private:
    std::optional<QVariantMap> request(
        const QString &method, const QVariantList &arguments, QVariantMap options);
    std::nullopt_t fail(const QString &problem);

    QDBusConnection m_bus;
    std::chrono::steady_clock::time_point m_end;
    QEventLoop m_loop;
    std::optional<uint> m_code;
    QVariantMap m_results;
    QString m_session; // its path, once there is one
    QString m_problem;
};

} // namespace oz::cast
