#pragma once

#include "cellular/Cellular.hpp"
#include "source/Source.hpp"
#include "table/Fields.hpp"

namespace oz::services {

/*! The cellular radio's abilities and state, as any source knows them. */
struct Radio
{
    struct Bands
    {
        QList<int> cdma; //!< band classes: 0, 1, 15
        QList<int> gsm; //!< MHz: 850, 900, 1800, 1900
        QList<int> umts; //!< operating bands: 1 to 10
        QList<int> lte; //!< operating bands: 1 to 31

        bool operator==(const Bands &) const = default;
    };

    std::optional<bool> poweredOn;
    std::optional<QList<Technology>> technologies; //!< of the hardware
    std::optional<CellularServices> services; //!< of the hardware
    std::optional<Bands> bands; //!< of the hardware
    std::optional<QList<Technology>> enabledTechnologies; //!< by the user
    std::optional<QList<Technology>> networks; //!< the technology of each network in use

    bool operator==(const Radio &) const = default;
};

using RadioSource = StateSource<Radio>;

/*! How it stands in the tree: what it does, and what the user has chosen. */
[[nodiscard]] const Fields<Radio> &radioFields();
[[nodiscard]] const Fields<Radio> &radioChoiceFields();

} // namespace oz::services
