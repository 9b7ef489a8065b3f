#pragma once

#include <oz/device/OzDeviceGlobal.hpp>

#include <QFlags>
#include <QObject>

namespace oz::device {

/*!
 * Services of a cellular network, alone or in a set. Holds the enumeration and its flag set only; it has no
 * instances.
 */
class OZ_DEVICE_EXPORT CellularService
{
    Q_GADGET

public:
    /*! The values. */
    enum Type {
        None = 0, //!< no service
        Emergency = 0x1, //!< emergency calls
        Voice = 0x2, //!< voice calls
        E911Callback = 0x4, //!< an emergency service may call back
        Data = 0x100, //!< packet data
        GenericAccessNetwork = 0x200, //!< the network over an unlicensed access, such as Wi-Fi
        ConcurrentVoiceData = 0x400, //!< voice and data at the same time
        DataGprs = 0x1000, //!< the kinds of packet data
        DataEdge = 0x2000,
        DataUmts = 0x4000,
        DataHspa = 0x8000,
        DataHspaP = 0x10000,
        DataCdma = 0x20000,
        DataEvdo0 = 0x40000,
        DataEvdoA = 0x80000,
        DataEhrpd = 0x100000,
        DataLte = 0x200000,
    };
    Q_ENUM(Type)
    Q_DECLARE_FLAGS(Types, Type)
    Q_FLAG(Types)

    CellularService() = delete;
};
Q_DECLARE_OPERATORS_FOR_FLAGS(CellularService::Types)

} // namespace oz::device
