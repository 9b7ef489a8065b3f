#include <oz/device/SdCardInfo.hpp>

#include "SdCardInfoPrivate.hpp"
#include "ThreadRule.hpp"

namespace oz::device {

SdCardInfo::SdCardInfo(QObject *parent) : QObject(parent), d(new SdCardInfoPrivate(this))
{
    keepOnThread(this);
}

SdCardInfo::~SdCardInfo() = default;

SdCardState::Type SdCardInfo::state() const
{
    return d->state();
}

SdCardActivity::Type SdCardInfo::activity() const
{
    return d->activity();
}

} // namespace oz::device
