#pragma once

#include <oz/client/DaemonClient.hpp>
#include <oz/client/FollowedObject.hpp>

#include <QStringList>
#include <QVariantList>
#include <QtQml/qqmlregistration.h>

/*!
 * The verbs and the state of the phone as the daemon describes them, and the devices around it. No call
 * waits: answers come with signals.
 */
class PhoneControl : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    /*! Whether services publish anything. */
    Q_PROPERTY(bool reachable READ isReachable NOTIFY changed)
    /*! Whether this user can tell the phone anything. */
    Q_PROPERTY(bool simulated READ isSimulated NOTIFY changed)
    /*!
     * The facilities, as the daemon describes them: maps with "name"; "title", "source", "state" and
     * "reason" if the daemon reports them; and, for those that the simulated phone feeds, "instances" (texts;
     * none for a single one without a name) and "verbs", each with "name", "arguments" (texts), "help",
     * "choices", "fault" and "repeats".
     */
    Q_PROPERTY(QVariantList facilities READ facilities NOTIFY changed)
    /*! The argument of each verb for the phone's present state: maps by facility, instance and verb. */
    Q_PROPERTY(QVariantMap values READ values NOTIFY valuesChanged)
    /*! The devices around the phone, in range or not: maps with "part" and "facility", the name and the title
     * of the facility, and "name", "title" and "in-range". */
    Q_PROPERTY(QVariantList neighbours READ neighbours NOTIFY neighboursChanged)
    /*! Whether the motor runs. */
    Q_PROPERTY(bool vibrating READ isVibrating NOTIFY vibratingChanged)

public:
    explicit PhoneControl(QObject *parent = nullptr);

    [[nodiscard]] bool isReachable() const { return !m_facilities.isEmpty(); }
    [[nodiscard]] bool isSimulated() const { return !m_parts.isEmpty(); }
    [[nodiscard]] QVariantList facilities() const { return m_facilities; }
    [[nodiscard]] QVariantMap values() const { return m_values; }
    [[nodiscard]] QVariantList neighbours() const;
    [[nodiscard]] bool isVibrating() const { return m_vibrating; }

    /*! Sends the order of `ozdevice sim`; returns its number, with which answered() follows. */
    Q_INVOKABLE int tell(const QStringList &words);
    /*! Moves one of the neighbours into range or out of it; returns as tell() does. */
    Q_INVOKABLE int bring(const QVariantMap &neighbour, bool inRange);

Q_SIGNALS:
    void changed();
    void valuesChanged();
    void neighboursChanged();
    void vibratingChanged();
    /*! \a problem is empty if the phone did it. The values have changed by then. */
    void answered(const QString &order, const QString &problem, int number);

private:
    void updatePhone(const QVariantMap &told);
    void describe();
    void updateFacilities();

    oz::client::DaemonClient m_daemon;
    oz::client::FollowedObject m_phone;
    oz::client::FollowedObject m_statusObject;
    oz::client::FollowedObject m_vibration;
    QVariantMap m_status; // of the facilities
    QVariantMap m_parts; // of the simulated phone
    QString m_description; // changes with what "describe" answers
    QVariantList m_facilities;
    QVariantMap m_values;
    QVariantList m_neighbours;
    int m_orders = 0;
    bool m_vibrating = false;
};
