#pragma once

#include "ozdevice/FacilityInstance.hpp"

#include <QJsonObject>
#include <QMetaMethod>
#include <QVariantList>

/*! What happens to facilities, a line each. */
namespace oz::tools {

/*! "stateChanged(Mounted)". */
[[nodiscard]] QString signalText(const QMetaMethod &signal, const QVariantList &arguments);

/*! Whether \a signal is the second form of one that carries an enumeration, with numbers in its place. */
[[nodiscard]] bool isNumericTwin(const QMetaMethod &signal);

/*! Begins a line about something that happens now, as text and as JSON. */
[[nodiscard]] QString lineBeginning(const FacilityInstance &instance);
[[nodiscard]] QJsonObject jsonBeginning(const FacilityInstance &instance);

} // namespace oz::tools
