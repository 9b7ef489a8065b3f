#pragma once

#include "linux/BusService.hpp"
#include "linux/UdevMonitor.hpp"
#include "source/Source.hpp"

#include <QDBusObjectPath>

namespace oz::services {

/*! The interfaces of wpa_supplicant's objects. */
namespace Wpa {
inline const QString Name = QStringLiteral("fi.w1.wpa_supplicant1");
inline const QString Root = QStringLiteral("/fi/w1/wpa_supplicant1");
inline const QString Interface = Name + QLatin1String(".Interface");
inline const QString P2p = Interface + QLatin1String(".P2PDevice");
inline const QString Peer = Name + QLatin1String(".Peer");
inline const QString Group = Name + QLatin1String(".Group");
inline const QString Bss = Name + QLatin1String(".BSS");
} // namespace Wpa

/*!
 * wpa_supplicant, and the one radio that Wi-Fi Direct uses. A radio that nobody has given to wpa_supplicant
 * is taken up, and gets the name and the kind of this device, so that peers see what they connect with.
 */
class WpaSupplicant : public QObject
{
    Q_OBJECT

public:
    /*! \a interface is the radio's network interface; where it is empty, the first one there is. */
    WpaSupplicant(std::shared_ptr<SystemBus> bus, const QString &interface);

    /*! The radio's object; empty while there is none. It has another path each time it is taken up. */
    [[nodiscard]] const QString &radio() const { return m_radio; }
    /*! The radio's network interface. */
    [[nodiscard]] const QString &interfaceName() const { return m_interface; }
    /*! Why there is no radio, in words for a person; empty while it has not been found out. */
    [[nodiscard]] const QString &absence() const { return m_absence; }
    /*! True if both wpa_supplicant and the radio can do Wi-Fi Direct. */
    [[nodiscard]] bool canP2p() const { return m_canP2p; }
    /*! False while the radio is blocked (rfkill), removed, or its link is down. */
    [[nodiscard]] bool isEnabled() const { return m_isEnabled; }

    /*! Why isEnabled() is false, in words for a person. */
    [[nodiscard]] QString obstacle() const;

    /*! Has peers see these wireless display subelements of this device, now and after each restart. */
    void setDisplayElements(const QByteArray &elements);
    [[nodiscard]] const QByteArray &displayElements() const { return m_displayElements; }

    using Answered = BusService::Answered;
    void call(const QString &path, const QString &interface, const QString &method,
        const QVariantList &arguments, QObject *context, const Answered &answered)
    {
        m_service.call(path, interface, method, arguments, context, answered);
    }
    /*! An interface of an object. */
    struct Part
    {
        QString path;
        QString interface;
    };
    /*! Reads all properties of each of \a parts: of one that fails, none. \a done is called once, with all of
     * them in that order. */
    void read(const QList<Part> &parts, QObject *context,
        const std::function<void(const QList<QVariantMap> &properties)> &done);
    void hear(const QString &path, const QString &interface, const QString &name, QObject *context,
        const Answered &heard)
    {
        m_service.hear(path, interface, name, context, heard);
    }

Q_SIGNALS:
    /*! The radio has come or gone, or absence() is another. */
    void radioChanged();
    void enabledChanged();

private:
    void findRadio();
    void takeUp();
    void onRadioFound(const QDBusMessage &answer);
    void readRadio(const QString &path);
    void introduce();
    void set(const QString &path, const QString &interface, const QString &name, const QVariant &value);
    void loseRadio(const QString &reason);
    void setEnabled(const QVariantMap &properties);

    BusService m_service;
    QString m_wanted;
    QString m_interface;
    UdevMonitor m_interfaces;
    RetryTimer m_again;
    QString m_radio;
    QString m_absence;
    bool m_canP2p = false;
    bool m_isEnabled = false;
    QByteArray m_displayElements;
};

/*! How a request ended that this \a answer is to. */
[[nodiscard]] Outcome outcomeOf(const QDBusMessage &answer);
/*! The path in an argument or a property; empty where that is "/", which stands for none. */
[[nodiscard]] QString pathOf(const QVariant &value);

} // namespace oz::services
