#pragma once

#include "miracast/CastLines.hpp"
#include "miracast/CastOrigin.hpp"
#include "publishing/WarnOnce.hpp"

#include <oz/DeviceServer.hpp>

#include <functional>
#include <map>
#include <memory>

namespace oz::services {

/*!
 * The program ozcast, which shows the screen on wireless displays, in a process of its own: it speaks with
 * strangers, and a capture or an encoder that stands still ends with it. It connects to the device
 * "/dev/cast", where it is the only client. What it says is checked; whatever is wrong ends the connection.
 */
class CastProcess : public QObject
{
    Q_OBJECT

public:
    explicit CastProcess(std::unique_ptr<CastOrigin> origin);

    /*! What it can do; nothing while it is not there. */
    [[nodiscard]] const std::optional<CastLines::Hello> &hello() const { return m_hello; }
    /*! Why it is not there, in words for a person. */
    [[nodiscard]] QString absence() const;
    /*! True while it may be there soon. */
    [[nodiscard]] bool isExpected() const;

    /*! A port that may accept connections. */
    struct Target
    {
        QString address;
        int port = 0;
    };
    /*! Takes the addresses that accept; nothing where ozcast does not tell. */
    using Probed = std::function<void(const std::optional<QStringList> &accepting)>;
    /*! Finds out which of the targets accept connections; \a probed is called once, later. */
    void probe(const QList<Target> &targets, const Probed &probed);

    /*! Begins to cast, and gives its id; only while hello() has a value. \a values are those of the order
     * beside the id. */
    [[nodiscard]] int cast(QJsonObject values);
    /*! Gives the order \a kind, such as "pause", for the cast \a id. */
    void order(const QString &kind, int id);
    /*! Ends a process that does not answer; terminated() follows. */
    void kill();

Q_SIGNALS:
    /*! hello() or absence() is another. */
    void changed();
    /*! It is gone, and with it whatever it did. */
    void terminated();
    void stepped(const oz::services::CastLines::Step &step);
    void playing(const oz::services::CastLines::Playing &playing);
    void paused(const oz::services::CastLines::Paused &paused);
    void ended(const oz::services::CastLines::Ended &ended);

private:
    void listen();
    void onConnected(const DeviceServer::Client &client);
    void onReceived(const DeviceServer::Client &client, const QByteArray &line);
    void onDisconnected(const DeviceServer::Client &client);
    void onOriginChanged();
    void take(const CastLines::Line &line);
    void takeHello(const CastLines::Hello &hello);
    void refuse(const DeviceServer::Client &client, const QString &why);
    void violate(const QString &what);
    void finishProbe(int id, const std::optional<QStringList> &accepting);

    std::unique_ptr<CastOrigin> m_origin;
    DeviceServer m_device;
    RetryTimer m_listenAgain;
    DeviceServer::Client m_client; // its id is 0 while none is connected
    std::optional<CastLines::Hello> m_hello;
    QString m_problem; // why the last one was not accepted
    int m_lastId = 0;
    std::map<int, Probed> m_probes;
    WarnOnce m_warn;
};

} // namespace oz::services
