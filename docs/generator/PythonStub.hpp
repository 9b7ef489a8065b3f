#pragma once

#include <QString>
#include <QVariantMap>

namespace oz::pages {

/*! The stub of the module for Python that has the parts of a phone. \a parts are the "simulated" parts as the
 * daemon describes them, and \a phone is what it publishes of the phone's state. */
[[nodiscard]] QString pythonStub(const QVariantMap &parts, const QVariantMap &phone);

} // namespace oz::pages
