#include <oz/device/CellularRadioInfo.hpp>

#include "CellularRadioInfoPrivate.hpp"
#include "ThreadRule.hpp"

namespace oz::device {

CellularRadioInfo::CellularRadioInfo(QObject *parent) : QObject(parent), d(new CellularRadioInfoPrivate(this))
{
    keepOnThread(this);
}

CellularRadioInfo::~CellularRadioInfo() = default;

bool CellularRadioInfo::isPoweredOn() const
{
    return d->values().poweredOn;
}

CellularTechnology::Types CellularRadioInfo::technologies() const
{
    return d->values().technologies;
}

CellularService::Types CellularRadioInfo::services() const
{
    return d->values().services;
}

CellularBand::Types CellularRadioInfo::bands() const
{
    return d->values().bands;
}

CellularTechnology::Types CellularRadioInfo::enabledTechnologies() const
{
    return d->values().enabledTechnologies;
}

CellularTechnology::Types CellularRadioInfo::activeTechnologies() const
{
    return d->values().activeTechnologies;
}

int CellularRadioInfo::networkCount() const
{
    return d->values().networkCount;
}

bool CellularRadioInfo::isDataEnabled() const
{
    return d->values().dataEnabled;
}

bool CellularRadioInfo::isDataRoaming() const
{
    return d->values().dataRoaming;
}

} // namespace oz::device
