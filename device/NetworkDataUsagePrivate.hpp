#pragma once

#include "ChangeTable.hpp"

#include <oz/device/NetworkDataUsage.hpp>

namespace oz::device {

struct NetworkDataUsagePrivate
{
    struct Counters
    {
        quint64 packetsReceived = 0;
        quint64 bytesReceived = 0;
        quint64 packetsSent = 0;
        quint64 bytesSent = 0;
    };

    NetworkDataUsage *q;
    QString networkInterfaceName;
    Announced<Counters> counters{};
};

} // namespace oz::device
