#pragma once

#include "table/WordList.hpp"

#include <QFlags>
#include <QList>
#include <QStringList>

namespace oz::services {

/*! The technology of a radio network. */
enum class Technology { Gsm, Umts, Cdma1x, Evdo, Lte };

/*! The services that a radio or a network offers. */
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

[[nodiscard]] const WordList<Technology> &technologyWords();
[[nodiscard]] QString wordOf(Technology technology);
[[nodiscard]] QStringList wordsOf(const QList<Technology> &technologies);
/*! The technologies of words, of which those that are none are left out. */
[[nodiscard]] QList<Technology> technologiesOf(const QStringList &words);

/*! "emergency", "voice", "data" and so on: what people call the services. */
[[nodiscard]] QStringList serviceWords();
[[nodiscard]] QStringList wordsOf(CellularServices services);
/*! The services of words, of which those that are none are left out. */
[[nodiscard]] CellularServices servicesOf(const QStringList &words);
/*! The bits of the tree. */
[[nodiscard]] int treeBits(CellularServices services);
[[nodiscard]] CellularServices servicesOfBits(int treeBits);

} // namespace oz::services
