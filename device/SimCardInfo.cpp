#include <oz/device/SimCardInfo.hpp>

#include "SimCardInfoPrivate.hpp"
#include "ThreadRule.hpp"

namespace oz::device {

SimCardInfo::SimCardInfo(QObject *parent) : QObject(parent), d(new SimCardInfoPrivate(this))
{
    keepOnThread(this);
}

SimCardInfo::~SimCardInfo()
{
    delete d;
    d = nullptr;
}

SimCardState::Type SimCardInfo::state() const
{
    return d->values().state;
}

QString SimCardInfo::mobileCountryCode() const
{
    return d->values().mobileCountryCode;
}

QString SimCardInfo::mobileNetworkCode() const
{
    return d->values().mobileNetworkCode;
}

QString SimCardInfo::serialNumber() const
{
    return d->values().serialNumber;
}

QString SimCardInfo::subscriberIdentifier() const
{
    return d->values().subscriberIdentifier;
}

} // namespace oz::device
