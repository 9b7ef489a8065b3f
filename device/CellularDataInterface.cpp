#include <oz/device/CellularDataInterface.hpp>

#include "CellularDataInterfacePrivate.hpp"
#include "ThreadRule.hpp"

namespace oz::device {

CellularDataInterface::CellularDataInterface(QObject *parent)
    : QObject(parent), d(new CellularDataInterfacePrivate(this))
{
    keepOnThread(this);
}

CellularDataInterface::CellularDataInterface(const QString &name, QObject *parent)
    : CellularDataInterface(parent)
{
    setName(name);
}

CellularDataInterface::~CellularDataInterface()
{
    requestDisconnect();
    delete d;
}

QString CellularDataInterface::name() const
{
    return d->name();
}

bool CellularDataInterface::isValid() const
{
    return d->state().valid;
}

bool CellularDataInterface::isAlwaysOn() const
{
    return d->state().alwaysOn;
}

bool CellularDataInterface::isAccessControlled() const
{
    return d->state().accessControlled;
}

QString CellularDataInterface::networkInterfaceName() const
{
    return d->state().networkInterfaceName;
}

QString CellularDataInterface::accessPointName() const
{
    return d->state().accessPointName;
}

CellularConnectionState::Type CellularDataInterface::connectionState() const
{
    return d->state().connectionState;
}

void CellularDataInterface::setName(const QString &name)
{
    d->setName(name);
}

int CellularDataInterface::requestConnect()
{
    return d->requestConnect();
}

int CellularDataInterface::requestDisconnect()
{
    return d->requestDisconnect();
}

QStringList CellularDataInterface::allNames() const
{
    return CellularDataInterfacePrivate::allNames();
}

} // namespace oz::device
