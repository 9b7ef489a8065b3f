#pragma once

#include <QByteArray>
#include <QLocalServer>
#include <QLocalSocket>
#include <QString>

#include <vector>

namespace oz::harness {

/*!
 * A modem that answers AT commands (3GPP TS 27.007) on two ports, as far as ModemManager's plugin for any
 * modem asks. What it is like is set from outside; it tells of changes by itself, as modems do.
 */
class AtModem
{
public:
    /*! By the name that its ports begin with. */
    explicit AtModem(const QString &name);

    /*! The ports, by the names that ModemManager connects to. */
    [[nodiscard]] QStringList ports() const;

    // The card.
    QByteArray pin; //!< that it waits for; empty where it waits for none
    QByteArray puk; //!< that it waits for after too many wrong PINs
    int tries = 3; //!< left for the PIN
    QByteArray subscriber = "001010123456789";
    QByteArray imei = "490154203237518";
    bool admitsData = true; //!< whether the network does
    /*! The card is put in, or pulled, and the modem tells so. */
    void insertCard(bool inserted);

    enum Registration { Searching = 2, Home = 1, Denied = 3, Roaming = 5, EmergencyOnly = 8 };
    enum Technology { Gsm = 0, Umts = 2, Edge = 3, Lte = 7 };
    /*! Is in this network from now on, and tells so. */
    void registerIn(Registration registration, Technology technology);
    void nameNetwork(const QByteArray &name, const QByteArray &code);
    /*! The signal in fifths. */
    void setSignal(int fifths);
    /*! All commands that it did not know. */
    [[nodiscard]] const QByteArrayList &unknown() const { return m_unknown; }

private:
    void onConnected(QLocalServer *port);
    [[nodiscard]] QByteArray answer(const QByteArray &command);
    [[nodiscard]] QByteArray registration(const QByteArray &name, bool asked) const;
    [[nodiscard]] QByteArray enterPin(const QByteArray &pins);
    void tell(const QByteArray &text);

    QString m_name;
    QList<QLocalSocket *> m_connections;
    std::vector<std::unique_ptr<QLocalServer>> m_ports;
    QByteArrayList m_unknown;
    Registration m_registration = Home;
    Technology m_technology = Lte;
    QByteArray m_operator = "Test Home";
    QByteArray m_operatorCode = "00101";
    bool m_namesByCode = false;
    int m_signal = 4;
    bool m_hasCard = true;
};

} // namespace oz::harness
