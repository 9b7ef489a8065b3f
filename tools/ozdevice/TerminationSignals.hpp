#pragma once

#include "SignalWatch.hpp"

#include <csignal>
#include <functional>

namespace oz::tools {

/*! During the instance's life, delivers the signals that would end the program through the event loop. */
class TerminationSignals : public arguments::SignalWatch
{
public:
    explicit TerminationSignals(const std::function<void(int signal)> &handler)
        : SignalWatch({SIGINT, SIGTERM, SIGHUP}, handler)
    {
    }
};

} // namespace oz::tools
