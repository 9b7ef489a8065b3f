#include <oz/device/NetworkDataUsage.hpp>

#include <QDebug>

using namespace oz::device;

int main()
{
    NetworkDataUsage usage(QStringLiteral("lo"));
    // The kernel is asked by update() alone.
    qInfo() << usage.networkInterfaceName() << "before:" << usage.bytesReceived();
    if (!usage.update())
        return 1;
    qInfo() << "what came is what was sent:" << (usage.bytesReceived() == usage.bytesSent());
}

// Over the simulated phone, this prints
//     "lo" before: 0
//     what came is what was sent: true
