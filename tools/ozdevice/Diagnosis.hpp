#pragma once

#include "ozdevice/DaemonAccess.hpp"

#include <QStringList>

#include <vector>

namespace oz::tools {

/*! What feeds the facilities, and what is wrong with the services and the tree, as this user sees them. */
struct Diagnosis
{
    std::vector<SourceState> sources; //!< none if no services run
    QStringList problems;
};

[[nodiscard]] Diagnosis diagnose(const DaemonState &daemon);

/*! Returns the sources of the facilities with the instances that applications see of each. */
[[nodiscard]] std::vector<SourceState> sourcesWithInstances(const DaemonState &daemon);

/*! Returns how many facilities are fed. */
[[nodiscard]] qsizetype fedCount(const std::vector<SourceState> &sources);

void printSources(const std::vector<SourceState> &sources);

} // namespace oz::tools
