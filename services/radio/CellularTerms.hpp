#pragma once

#include <QStringList>

/*! The words of the cellular services, in the phone's file and in sources. */
namespace oz::services::CellularTerms {

/*! "gsm", "umts", "cdma_1x", "evdo" and "lte", as in the tree. */
[[nodiscard]] QStringList technologies();

/*! "emergency", "voice", "data" and so on. */
[[nodiscard]] QStringList services();
/*! The services as bits, as in the tree. */
[[nodiscard]] int serviceBits(const QStringList &services);

} // namespace oz::services::CellularTerms
