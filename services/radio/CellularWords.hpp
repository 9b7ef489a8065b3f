#pragma once

#include "radio/CellularTypes.hpp"

#include <QStringList>

/*! How the tree writes technologies and services, and how the phone's file does. */
namespace oz::services::CellularWords {

/*! The folder of the radio's objects in the tree. */
inline const QString Radioctrl = QStringLiteral("/pps/services/cellular/radioctrl/");

/*! "gsm", "umts", "cdma_1x", "evdo" and "lte", in the order of Technology; the same in tree and file. */
[[nodiscard]] QStringList technologies();
[[nodiscard]] QString wordOf(Technology technology);
[[nodiscard]] QStringList wordsOf(const QList<Technology> &technologies);
/*! The technologies of words that are all known. */
[[nodiscard]] QList<Technology> technologiesOf(const QStringList &words);

/*! "emergency", "voice", "data" and so on: the words of the file. */
[[nodiscard]] QStringList services();
/*! The services of words that are all known. */
[[nodiscard]] CellularServices servicesOf(const QStringList &words);
/*! The bits of the tree. */
[[nodiscard]] int treeBits(CellularServices services);

} // namespace oz::services::CellularWords
