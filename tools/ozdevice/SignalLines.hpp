#pragma once

#include "ozdevice/FacilityInstance.hpp"

#include <QJsonObject>
#include <QMetaMethod>
#include <QVariantList>

/*! Lines about the signals of facilities. */
namespace oz::tools {

/*! "stateChanged(Mounted)". */
[[nodiscard]] QString signalText(const QMetaMethod &signal, const QVariantList &arguments);

/*! The beginning of a line about something that happens now, as text and as JSON. */
[[nodiscard]] QString lineBeginning(const FacilityInstance &instance);
[[nodiscard]] QJsonObject jsonBeginning(const FacilityInstance &instance);

} // namespace oz::tools
