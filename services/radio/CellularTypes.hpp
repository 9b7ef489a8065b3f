#pragma once

#include <QFlags>
#include <QList>

namespace oz::services {

/*! What kind of radio network it is. */
enum class Technology { Gsm, Umts, Cdma1x, Evdo, Lte };

/*! What a radio, or a network, offers. */
enum class CellularService {
    Emergency = 1 << 0,
    Voice = 1 << 1,
    E911Callback = 1 << 2,
    Data = 1 << 3,
    GenericAccess = 1 << 4,
    ConcurrentVoiceData = 1 << 5,
    Gprs = 1 << 6,
    Edge = 1 << 7,
    Umts = 1 << 8,
    Hspa = 1 << 9,
    HspaPlus = 1 << 10,
    Cdma = 1 << 11,
    Evdo0 = 1 << 12,
    EvdoA = 1 << 13,
    Ehrpd = 1 << 14,
    Lte = 1 << 15,
};
Q_DECLARE_FLAGS(CellularServices, CellularService)
Q_DECLARE_OPERATORS_FOR_FLAGS(CellularServices)

} // namespace oz::services
