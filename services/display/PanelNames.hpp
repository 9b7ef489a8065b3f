#pragma once

#include <QByteArray>

namespace oz::services {

/*! True if the name of an output, which is that of the kernel's connector, is a built-in panel's. */
inline bool isPanelName(const QByteArray &name)
{
    return name.startsWith("eDP") || name.startsWith("LVDS") || name.startsWith("DSI");
}

} // namespace oz::services
