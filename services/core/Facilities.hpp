#pragma once

#include <QMap>
#include <QObject>
#include <QString>

#include <functional>
#include <memory>
#include <vector>

namespace oz::services {

class SimulatedPhone;

/*! A facility of the device as the daemon offers it: the sources that can feed it, by name. */
struct Facility
{
    /*! Makes the facility's publisher over one source, and publishes; throws Error where that fails,
     * SourceUnavailable where only the source does. */
    using Start = std::function<std::unique_ptr<QObject>(SimulatedPhone &phone)>;

    QString name;
    QMap<QString, Start> sources;
};

/*! Every facility, in the order in which they start. A new one is one entry here. */
[[nodiscard]] const std::vector<Facility> &facilities();

} // namespace oz::services
