#pragma once

#include <QObject>
#include <QStringList>

#include <optional>

namespace oz::services {

/*! The cellular networks in use, whoever knows them. Services: CellularTerms. */
class CellularNetworkSource : public QObject
{
    Q_OBJECT

public:
    /*! Where the device is in a network; which of these there are depends on the technology. */
    struct Cell
    {
        std::optional<int> cellId;
        std::optional<int> locationArea;
        std::optional<int> trackingArea;
        std::optional<int> baseStation;
        std::optional<int> network;
        std::optional<int> system;
    };

    struct Network
    {
        QStringList services;
        QString operatorName;
        QString displayName; //!< what the user is to see as the network's name
        QString countryCode; //!< three digits
        QString networkCode; //!< two or three digits
        int signalStrength = 0; //!< dBm
        bool roams = false;
        bool suppressesRoaming = false; //!< roaming there is not for the user to know
        Cell cell; //!< tells where the device is: it is for no log

        [[nodiscard]] bool isRoaming() const { return roams && !suppressesRoaming; }
    };

    struct State
    {
        std::optional<Network> primary; //!< of any technology but CDMA 1X
        std::optional<Network> cdma1x; //!< beside the primary one, or alone
    };

    /*! The state; nothing while it is not known yet, which is then not published either. */
    [[nodiscard]] virtual std::optional<State> state() const = 0;

Q_SIGNALS:
    void changed();
};

} // namespace oz::services
