#pragma once

#include "wifi-direct/NetworkManagerP2p.hpp"
#include "wifi-direct/WpaPeers.hpp"

#include <QTimer>

namespace oz::services {

/*!
 * The connecting of a peer: from the request until there is a group, or until it has failed or was cancelled.
 * A peer that wpa_supplicant has lost is looked for first. Where NetworkManager owns the radio it connects.
 */
class WpaConnecting : public QObject
{
    Q_OBJECT

public:
    using Request = WiFiDirectSource::ConnectRequest;

    WpaConnecting(WpaSupplicant &supplicant, WpaPeers &peers, NetworkManagerP2p &manager);

    [[nodiscard]] bool isActive() const { return m_request.has_value(); }
    /*! True for a while after one was cancelled: a group that forms then belongs to it, and is to end. */
    [[nodiscard]] bool isRefusing() const { return m_refusal.isActive(); }

    /*! Why one failed. */
    enum class Failure {
        Other, //!< nothing says why: the peer did not answer, for instance
        WrongPin,
        OtherMethod, //!< the peer wants another method
        Refused, //!< by the peer
    };
    /*! Of the last one, if it failed. */
    [[nodiscard]] Failure failure() const { return m_failure; }

    /*! Begins one; \a done is called once it is under way, or with the reason why it cannot be. */
    void begin(const Request &request, const Done &done);
    void cancel();
    /*! It is over, with a group or without. */
    void end();
    /*! What was cancelled has ended for good. */
    void endRefusing() { m_refusal.stop(); }

Q_SIGNALS:
    /*! It is under way, or has ended. */
    void changed();

private:
    void search(const Done &done);
    void connectPeer(const Done &done);
    void onFound(const QString &address);
    void fail(Failure failure);
    [[nodiscard]] QVariantMap settings() const;

    WpaSupplicant &m_supplicant;
    WpaPeers &m_peers;
    NetworkManagerP2p &m_manager;
    std::optional<Request> m_request; // while it is active
    Failure m_failure = Failure::Other;
    bool m_isSearching = false; // for the peer of the request
    QTimer m_limit;
    QTimer m_refusal;
};

} // namespace oz::services
