#include <oz/device/MiracastManager.hpp>

#include "MiracastManagerPrivate.hpp"
#include "ThreadRule.hpp"

namespace oz::device {

MiracastManager::MiracastManager(QObject *parent) : QObject(parent), d(new MiracastManagerPrivate(this))
{
    keepOnThread(this);
}

MiracastManager::~MiracastManager()
{
    delete d;
}

QString MiracastManager::hardwareAddress() const
{
    return d->state().hardwareAddress;
}

MiracastConnectionState::Type MiracastManager::connectionState() const
{
    return d->state().connectionState;
}

QString MiracastManager::deviceName() const
{
    return d->state().deviceName;
}

QSize MiracastManager::devicePixelSize() const
{
    return d->state().devicePixelSize;
}

MiracastDisplayState::Type MiracastManager::displayState() const
{
    return d->state().displayState;
}

MiracastDeviceCategory::Type MiracastManager::deviceCategory() const
{
    return d->state().category;
}

MiracastDeviceSubCategory::Type MiracastManager::deviceSubCategory() const
{
    return d->state().subCategory;
}

QString MiracastManager::sessionId() const
{
    return d->state().sessionId;
}

MiracastStopReason::Type MiracastManager::stopReason() const
{
    return d->state().stopReason;
}

MiracastStatus::Type MiracastManager::status() const
{
    return d->state().status;
}

void MiracastManager::requestConnect(const QString &hardwareAddress, const QString &pin)
{
    d->requestConnect(hardwareAddress, pin);
}

void MiracastManager::requestShutdown()
{
    d->requestShutdown();
}

void MiracastManager::warmup()
{
    d->warmup();
}

bool MiracastManager::isSupported()
{
    return MiracastManagerPrivate::isSupported();
}

void MiracastManager::requestScan()
{
    d->requestScan();
}

void MiracastManager::requestDisconnect()
{
    d->requestDisconnect();
}

void MiracastManager::requestPause()
{
    d->requestPause();
}

void MiracastManager::requestResume()
{
    d->requestResume();
}

} // namespace oz::device
