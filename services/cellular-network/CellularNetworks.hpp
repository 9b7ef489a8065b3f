#pragma once

#include "cellular/Cellular.hpp"
#include "source/Source.hpp"
#include "table/Fields.hpp"

#include <QMap>

namespace oz::services {

/*! The cellular networks in use, as any source knows them. */
struct CellularNetworks
{
    /*! Where the device is in a network; which of these there are depends on the technology. */
    struct Cell
    {
        std::optional<int> cellId;
        std::optional<int> locationArea;
        std::optional<int> trackingArea;
        std::optional<int> baseStation;
        std::optional<int> network;
        std::optional<int> system;

        bool operator==(const Cell &) const = default;
    };

    struct Network
    {
        std::optional<CellularServices> services;
        std::optional<QString> operatorName;
        std::optional<QString> displayName; //!< what the user is to see as the network's name
        std::optional<QString> countryCode; //!< three digits
        std::optional<QString> networkCode; //!< two or three digits
        std::optional<int> signalStrength; //!< dBm
        std::optional<bool> roams;
        bool suppressesRoaming = false; //!< roaming there is not for the user to know
        Cell cell; //!< tells where the device is: it is for no log

        [[nodiscard]] bool isRoaming() const { return roams.value_or(false) && !suppressesRoaming; }
        bool operator==(const Network &) const = default;
    };

    std::optional<Network> primary; //!< of any technology but CDMA 1X
    std::optional<Network> cdma1x; //!< beside the primary one, or alone

    bool operator==(const CellularNetworks &) const = default;
};

using CellularNetworkSource = StateSource<CellularNetworks>;

/*! The keys of a cell's identifiers in the phone's file, with the technologies whose networks have each. */
[[nodiscard]] const QMap<QString, QList<Technology>> &cellKeys();

/*! How they stand in the tree: of each what everybody may know, and where the device is in it; and the name
 * that the user is to see. */
[[nodiscard]] const Fields<CellularNetworks> &primaryNetworkFields();
[[nodiscard]] const Fields<CellularNetworks> &primaryCellFields();
[[nodiscard]] const Fields<CellularNetworks> &cdma1xNetworkFields();
[[nodiscard]] const Fields<CellularNetworks> &cdma1xCellFields();
[[nodiscard]] const Fields<CellularNetworks> &networkNameFields();

} // namespace oz::services
