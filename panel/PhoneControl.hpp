#pragma once

#include <oz/client/DaemonClient.hpp>
#include <oz/client/FollowedObject.hpp>

#include <QColor>
#include <QStringList>
#include <QVariantList>
#include <QtQml/qqmlregistration.h>

/*!
 * What the phone can be told, what it is like where only its services know, and who is around it. Never
 * waits: answers come with signals.
 */
class PhoneControl : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    /*! Whether services publish anything. */
    Q_PROPERTY(bool reachable READ isReachable NOTIFY changed)
    /*! Whether there is anything that this user can tell the phone. */
    Q_PROPERTY(bool simulated READ isSimulated NOTIFY changed)
    /*!
     * The facilities, as the daemon describes them: maps with "name"; "title", "source", "state" and
     * "reason", where they are told; and, of those that the simulated phone feeds, "instances" (texts, none
     * where there is but one) and "verbs", each with "name", "arguments" (texts), "help", "choices" and
     * "fault".
     */
    Q_PROPERTY(QVariantList facilities READ facilities NOTIFY changed)
    /*! What each verb of each instance of each facility would be told now: three maps in each other. */
    Q_PROPERTY(QVariantMap values READ values NOTIFY valuesChanged)
    /*! What is around the phone, in range or not: maps with "part" and "facility", the name and the title of
     * the facility, and "name", "title" and "in-range". */
    Q_PROPERTY(QVariantList neighbours READ neighbours NOTIFY neighboursChanged)
    /*! The colour that the LED shows; transparent while it is dark, and where that is not known. */
    Q_PROPERTY(QColor led READ led NOTIFY ledChanged)
    /*! Whether the motor runs. */
    Q_PROPERTY(bool vibrating READ isVibrating NOTIFY vibratingChanged)

public:
    explicit PhoneControl(QObject *parent = nullptr);

    [[nodiscard]] bool isReachable() const { return !m_facilities.isEmpty(); }
    [[nodiscard]] bool isSimulated() const { return !m_parts.isEmpty(); }
    [[nodiscard]] QVariantList facilities() const { return m_facilities; }
    [[nodiscard]] QVariantMap values() const { return m_values; }
    [[nodiscard]] QVariantList neighbours() const;
    [[nodiscard]] QColor led() const { return m_led; }
    [[nodiscard]] bool isVibrating() const { return m_vibrating; }

    /*! Tells the phone what `ozdevice sim` would; answered() follows, with the number that this returns. */
    Q_INVOKABLE int tell(const QStringList &words);
    /*! Brings one of the neighbours into range, or takes it out, as tell(). */
    Q_INVOKABLE int bring(const QVariantMap &neighbour, bool inRange);

Q_SIGNALS:
    void changed();
    void valuesChanged();
    void neighboursChanged();
    void ledChanged();
    void vibratingChanged();
    /*! \a problem is empty where the phone did what it was told; values tells before what became of it. */
    void answered(const QString &order, const QString &problem, int number);

private:
    void takePhone(const QVariantMap &told);
    void takeLed(const QVariantMap &lit);
    void describe();
    void gather();

    oz::client::DaemonClient m_daemon;
    oz::client::FollowedObject m_phone;
    oz::client::FollowedObject m_statusObject;
    oz::client::FollowedObject m_ledStatus;
    oz::client::FollowedObject m_vibration;
    QVariantMap m_status; // of the facilities
    QVariantMap m_parts; // of the simulated phone
    QString m_description; // the mark of that
    QVariantList m_facilities;
    QVariantMap m_values;
    QVariantList m_neighbours;
    int m_orders = 0;
    QColor m_led;
    bool m_vibrating = false;
};
