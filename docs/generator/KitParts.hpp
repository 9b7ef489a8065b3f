#pragma once

#include <QString>
#include <QVariantMap>

namespace oz::pages {

/*! The public header of the test kit with a class per part of the simulated phone, which has a call per verb.
 * \a parts are the "simulated" parts as the daemon describes them. */
[[nodiscard]] QString phonePartsHeader(const QVariantMap &parts);

} // namespace oz::pages
