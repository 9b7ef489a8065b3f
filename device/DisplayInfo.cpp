#include <oz/device/DisplayInfo.hpp>

#include "DisplayInfoPrivate.hpp"
#include "ThreadRule.hpp"

namespace oz::device {

namespace {

int idOf(ScreenDisplay::AlternateType type)
{
    const ScreenContext context;
    return ScreenDisplay::forAlternateType(context, type).id();
}

} // namespace

DisplayInfo::DisplayInfo(QObject *parent) : DisplayInfo(primaryDisplayId(), parent) { }

DisplayInfo::DisplayInfo(int displayId, QObject *parent)
    : QObject(parent), d(new DisplayInfoPrivate(displayId, this))
{
    keepOnThread(this);
}

DisplayInfo::~DisplayInfo()
{
    delete d;
}

int DisplayInfo::primaryDisplayId()
{
    return idOf(ScreenDisplay::Primary);
}

int DisplayInfo::secondaryDisplayId()
{
    return idOf(ScreenDisplay::Secondary);
}

bool DisplayInfo::isValid() const
{
    return d->isValid();
}

int DisplayInfo::displayId() const
{
    return d->displayId();
}

QString DisplayInfo::displayName() const
{
    return d->values().displayName;
}

QSize DisplayInfo::pixelSize() const
{
    return d->values().pixelSize;
}

QSizeF DisplayInfo::physicalSize() const
{
    return d->values().physicalSize;
}

QSizeF DisplayInfo::resolution() const
{
    return d->resolution();
}

DisplayAspectType::Type DisplayInfo::aspectType() const
{
    return d->values().aspectType;
}

bool DisplayInfo::isAttached() const
{
    return d->values().attached;
}

bool DisplayInfo::isDetachable() const
{
    return d->values().detachable;
}

DisplayTechnology::Type DisplayInfo::displayTechnology() const
{
    return d->values().displayTechnology;
}

bool DisplayInfo::isWireless() const
{
    return d->isWireless();
}

} // namespace oz::device
