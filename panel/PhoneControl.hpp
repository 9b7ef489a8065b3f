#pragma once

#include <oz/PpsObject.hpp>

#include <QColor>
#include <QQueue>
#include <QStringList>
#include <QTimer>
#include <QVariantList>
#include <QtQml/qqmlregistration.h>

/*!
 * What the simulated phone can be told, and what only its services know of it. Never waits: answers come with
 * signals.
 */
class PhoneControl : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    /*! Whether the daemon is there and lets this user tell it. */
    Q_PROPERTY(bool reachable READ isReachable NOTIFY changed)
    /*!
     * The facilities of the simulated phone, as the daemon describes them: maps with "name", "instances"
     * (texts, none where there is but one) and "verbs", each with "name", "arguments" (texts) and "help".
     * Empty on a real device.
     */
    Q_PROPERTY(QVariantList facilities READ facilities NOTIFY changed)
    /*! The colour that the LED shows; transparent while it is dark, and where that is not known. */
    Q_PROPERTY(QColor led READ led NOTIFY ledChanged)
    /*! Whether the motor runs. */
    Q_PROPERTY(bool vibrating READ isVibrating NOTIFY vibratingChanged)

public:
    explicit PhoneControl(QObject *parent = nullptr);

    [[nodiscard]] bool isReachable() const { return m_control.isOpen(); }
    [[nodiscard]] QVariantList facilities() const { return m_facilities; }
    [[nodiscard]] QColor led() const { return m_led; }
    [[nodiscard]] bool isVibrating() const { return m_vibrating; }

    /*! Tells the phone what `ozdevice sim` would; answered() follows. */
    Q_INVOKABLE void tell(const QStringList &words);

Q_SIGNALS:
    void changed();
    void ledChanged();
    void vibratingChanged();
    /*! \a problem is empty where the phone did what it was told. */
    void answered(const QString &order, const QString &problem);

private:
    void connectToDaemon();
    void ask(const QString &request, const QVariant &data, const QString &order);
    void takeAnswer();
    void readLed();
    void readVibration();

    oz::PpsObject m_control;
    oz::PpsObject m_ledStatus;
    oz::PpsObject m_vibration;
    QTimer m_again; // tries to reach a daemon that is not there yet
    QQueue<QString> m_asked; // answers come in the order of the orders
    QVariantList m_facilities;
    QColor m_led;
    bool m_vibrating = false;
};
