#pragma once

#include <oz/device/OzDeviceGlobal.hpp>

#include <QFlags>
#include <QObject>

namespace oz::device {

/*!
 * Frequency bands of the cellular technologies, alone or in a set: GSM by its frequency in MHz, CDMA by its
 * band class, UMTS and LTE by their operating band. Holds the enumeration and its flag set only; it has no
 * instances.
 */
class OZ_DEVICE_EXPORT CellularBand
{
    Q_GADGET

public:
    /*! The values. */
    enum Type {
        None = 0,
        Cdma0 = 0x1,
        CdmaI = 0x2,
        CdmaXV = 0x4,
        Gsm850 = 0x8,
        Gsm900 = 0x10,
        Gsm1800 = 0x20,
        Gsm1900 = 0x40,
        UmtsI = 0x80,
        UmtsII = 0x100,
        UmtsIII = 0x200,
        UmtsIV = 0x400,
        UmtsV = 0x800,
        UmtsVI = 0x1000,
        UmtsVII = 0x2000,
        UmtsVIII = 0x4000,
        UmtsIX = 0x8000,
        UmtsX = 0x10000,
        LteII = 0x20000,
        LteIII = 0x40000,
        LteIV = 0x80000,
        LteV = 0x100000,
        LteVII = 0x200000,
        LteVIII = 0x400000,
        LteXIII = 0x800000,
        LteXVII = 0x1000000,
        LteXX = 0x2000000,
    };
    Q_ENUM(Type)
    Q_DECLARE_FLAGS(Types, Type)
    Q_FLAG(Types)

    CellularBand() = delete;
};
Q_DECLARE_OPERATORS_FOR_FLAGS(CellularBand::Types)

} // namespace oz::device
