#pragma once

#include <QMetaObject>
#include <QObject>
#include <QString>

#include <functional>
#include <memory>
#include <vector>

namespace oz::tools {

/*! A facility of the library as the command offers it. */
struct FacilityEntry
{
    QString name;
    QString help;
    const QMetaObject *type;
    QString selector; //!< the option that tells which one is meant ("index"), empty where there is only one
    std::function<std::unique_ptr<QObject>(const QString &selected)> make;
};

/*! Every facility. A new one is one line there. */
[[nodiscard]] const std::vector<FacilityEntry> &facilityTable();

} // namespace oz::tools
