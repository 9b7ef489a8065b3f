#include <oz/device/DeviceInfo.hpp>

#include "DeviceInfoPrivate.hpp"
#include "ThreadRule.hpp"

namespace oz::device {

DeviceInfo::DeviceInfo(QObject *parent) : QObject(parent), d(new DeviceInfoPrivate(this))
{
    keepOnThread(this);
}

DeviceInfo::~DeviceInfo()
{
    delete std::exchange(d, nullptr);
}

DeviceOrientation::Type DeviceInfo::orientation() const
{
    return d->orientation();
}

UserActivityState::Type DeviceInfo::activityState() const
{
    return d->activityState();
}

bool DeviceInfo::isOrientationValid() const
{
    return d->isOrientationValid();
}

} // namespace oz::device
