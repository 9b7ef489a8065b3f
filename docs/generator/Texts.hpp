#pragma once

#include <QString>
#include <QVariantMap>

namespace oz::pages {

/*! A source with the texts that the panel shows as the daemon sends them, for the translators' tools: the
 * titles of facilities, and the names and help of the verbs of \a parts, the "simulated" parts as the daemon
 * describes them. */
[[nodiscard]] QString textsForTranslators(const QVariantMap &parts);

} // namespace oz::pages
