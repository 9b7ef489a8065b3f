#include <oz/device/CellularNetworkInfo.hpp>

#include "CellularNetworkInfoPrivate.hpp"
#include "ThreadRule.hpp"

namespace oz::device {

CellularNetworkInfo::CellularNetworkInfo(QObject *parent) : CellularNetworkInfo(0, parent) { }

CellularNetworkInfo::CellularNetworkInfo(int index, QObject *parent)
    : QObject(parent), d(new CellularNetworkInfoPrivate(index, this))
{
    keepOnThread(this);
}

CellularNetworkInfo::~CellularNetworkInfo() = default;

int CellularNetworkInfo::index() const
{
    return d->selection().index;
}

CellularTechnology::Type CellularNetworkInfo::technology() const
{
    return d->selection().technology;
}

CellularService::Types CellularNetworkInfo::services() const
{
    return d->values().services;
}

QString CellularNetworkInfo::name() const
{
    return d->values().name;
}

QString CellularNetworkInfo::mobileCountryCode() const
{
    return d->values().mobileCountryCode;
}

QString CellularNetworkInfo::mobileNetworkCode() const
{
    return d->values().mobileNetworkCode;
}

int CellularNetworkInfo::signalStrength() const
{
    return d->values().signalStrength;
}

bool CellularNetworkInfo::isRoaming() const
{
    return d->values().roaming;
}

int CellularNetworkInfo::cellId() const
{
    return d->values().cellId;
}

int CellularNetworkInfo::locationAreaCode() const
{
    return d->values().locationAreaCode;
}

int CellularNetworkInfo::trackingAreaCode() const
{
    return d->values().trackingAreaCode;
}

int CellularNetworkInfo::baseStationId() const
{
    return d->values().baseStationId;
}

int CellularNetworkInfo::networkId() const
{
    return d->values().networkId;
}

int CellularNetworkInfo::systemId() const
{
    return d->values().systemId;
}

QString CellularNetworkInfo::displayName() const
{
    return d->values().displayName;
}

void CellularNetworkInfo::setIndex(int index)
{
    d->setIndex(index);
}

} // namespace oz::device
