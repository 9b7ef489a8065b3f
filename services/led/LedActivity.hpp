#pragma once

#include "led/LedRequests.hpp"
#include "table/Fields.hpp"

namespace oz::services {

/*! Publishes the LED's requests and flashes for observers. */
struct LedActivity
{
    std::vector<LedRequest> requests; //!< that are under way, the newest last
    quint64 flashes = 0;
    std::optional<std::pair<LedRequest, QString>> last; //!< that has ended, and how
};

/*! A request as it stands there. */
[[nodiscard]] QVariantMap attributesOf(const LedRequest &request);
/*! How the activity stands in the tree: for the services' user and group, as it names processes. */
[[nodiscard]] const Fields<LedActivity> &ledActivityFields();

} // namespace oz::services
