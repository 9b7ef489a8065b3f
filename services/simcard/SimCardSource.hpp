#pragma once

#include <QObject>
#include <QString>

#include <optional>

namespace oz::services {

/*! What the SIM card in the first slot is like, whoever knows it. */
class SimCardSource : public QObject
{
    Q_OBJECT

public:
    enum class Card { Absent, Incompatible, NotProvisioned, Unreadable, PinRequired, Ready };

    struct Network
    {
        QString countryCode; //!< three digits
        QString networkCode; //!< two or three digits
    };

    struct State
    {
        Card card = Card::Absent;
        //! These identify the card and its owner: they are for no log.
        std::optional<QString> serialNumber;
        std::optional<QString> subscriberIdentifier;
        std::optional<Network> homeNetwork;
    };

    /*! The state; nothing while it is not known yet, which is then not published either. */
    [[nodiscard]] virtual std::optional<State> state() const = 0;

Q_SIGNALS:
    void changed();
};

} // namespace oz::services
