#pragma once

#include "linux/WpaSupplicant.hpp"
#include "wifi-direct/WiFiDirectState.hpp"

#include <chrono>

namespace oz::services {

/*!
 * The peers around, as wpa_supplicant sees them. It loses sight of a peer a minute after it was last heard,
 * and hears none without a scan; so a peer that it loses while nobody scans stays in sight here until the
 * next scan has ended without it.
 */
class WpaPeers : public QObject
{
    Q_OBJECT

public:
    using Peer = WiFiDirectState::Peer;

    explicit WpaPeers(WpaSupplicant &supplicant);

    /*! In the order in which they came into sight. */
    [[nodiscard]] QList<Peer> inSight() const;
    /*! The peer at a hardware address, whatever its case; null where none is in sight. */
    [[nodiscard]] const Peer *find(const QString &address) const;
    /*! True while wpa_supplicant knows it too, so that it can be connected. */
    [[nodiscard]] bool isReachable(const QString &address) const;
    /*! True if it owns a group, which can be joined. */
    [[nodiscard]] bool ownsGroup(const QString &address) const;
    /*! False if a peer says that it has no button to push. */
    [[nodiscard]] bool hasPushButton(const QString &address) const;
    /*! The object of a peer, known or not. */
    [[nodiscard]] QString objectOf(const QString &address) const;
    /*! The hardware address in the path of a peer's object: "02:00:00:00:01:00". */
    [[nodiscard]] static QString addressIn(const QString &object);

    /*! Takes over the peers that wpa_supplicant knows, beside those of before, and then calls \a done. */
    void readAll(const std::function<void()> &done);
    /*! Calls \a done once all peers that were found so far are in sight: now or later. */
    void afterReading(const std::function<void()> &done);
    /*! Drops those that wpa_supplicant does not know. */
    void dropUnreachable();
    /*! None of them can be reached until it is found again. */
    void setUnreachable();
    void clear();
    /*! Where they are looked for. */
    enum class Channels {
        Every, //!< all at first, as owners of groups may be on any, then the social ones
        Social, //!< those on which devices find one another
    };
    /*! Looks for peers; \a answered is called once it has begun. */
    void search(Channels channels, std::chrono::seconds time, const WpaSupplicant::Answered &answered);
    void setScanning(bool scanning);

Q_SIGNALS:
    /*! The peers in sight are others, or one of them has changed. */
    void changed();
    /*! A peer can be connected. */
    void found(const QString &address);

private:
    struct Known
    {
        Peer peer;
        bool isReachable = true;
        bool ownsGroup = false;
        bool hasPushButton = true;
    };

    void readPeers(const QStringList &objects, const std::function<void()> &done);
    void readNetworks(const std::function<void(const QList<QVariantMap> &networks)> &done);
    void take(const QList<Known> &peers, const QList<QVariantMap> &networks);
    void onFound(const QString &object);
    void onLost(const QString &object);
    [[nodiscard]] static std::optional<Known> knownOf(const QString &object, const QVariantMap &properties);
    [[nodiscard]] qsizetype indexOf(const QString &address) const;

    WpaSupplicant &m_supplicant;
    QList<Known> m_known;
    bool m_isScanning = false;
    int m_readings = 0; // that are under way
    QList<std::function<void()>> m_waiting; // for the end of all of them
};

} // namespace oz::services
