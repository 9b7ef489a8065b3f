#pragma once

#include "EnumHolder.hpp"

#include <oz/device/BatteryChargingState.hpp>
#include <oz/device/BatteryCondition.hpp>
#include <oz/device/BatteryInfo.hpp>
#include <oz/device/CellularBand.hpp>
#include <oz/device/CellularConnectionRequestResult.hpp>
#include <oz/device/CellularConnectionState.hpp>
#include <oz/device/CellularDataInterface.hpp>
#include <oz/device/CellularNetworkInfo.hpp>
#include <oz/device/CellularRadioInfo.hpp>
#include <oz/device/CellularService.hpp>
#include <oz/device/CellularTechnology.hpp>
#include <oz/device/DeviceInfo.hpp>
#include <oz/device/DeviceOrientation.hpp>
#include <oz/device/DisplayAspectType.hpp>
#include <oz/device/DisplayInfo.hpp>
#include <oz/device/DisplayTechnology.hpp>
#include <oz/device/HardwareInfo.hpp>
#include <oz/device/HdmiConnector.hpp>
#include <oz/device/Led.hpp>
#include <oz/device/LedColor.hpp>
#include <oz/device/MiracastConnectionState.hpp>
#include <oz/device/MiracastDeviceCategory.hpp>
#include <oz/device/MiracastDeviceSubCategory.hpp>
#include <oz/device/MiracastDisplayState.hpp>
#include <oz/device/MiracastManager.hpp>
#include <oz/device/MiracastResult.hpp>
#include <oz/device/MiracastStatus.hpp>
#include <oz/device/MiracastStopReason.hpp>
#include <oz/device/NetworkDataUsage.hpp>
#include <oz/device/SdCardActivity.hpp>
#include <oz/device/SdCardInfo.hpp>
#include <oz/device/SdCardState.hpp>
#include <oz/device/SimCardInfo.hpp>
#include <oz/device/SimCardState.hpp>
#include <oz/device/UserActivityState.hpp>
#include <oz/device/VibrationController.hpp>
#include <oz/device/WiFiDirect.hpp>
#include <oz/device/WiFiDirectConnectionState.hpp>
#include <oz/device/WiFiDirectDeviceType.hpp>
#include <oz/device/WiFiDirectIntent.hpp>
#include <oz/device/WiFiDirectResult.hpp>
#include <oz/device/WiFiDirectRole.hpp>
#include <oz/device/WiFiDirectSecondaryDeviceType.hpp>
#include <oz/device/WiFiDirectWpsMethod.hpp>

#include <QtQml/qqml.h>

// A class as the QML type of its name; one more for each minor version of the module that a revision of the
// class is in.
#define OZ_TYPE(NAME) OZ_REVISION(NAME, 0)
#define OZ_REVISION(NAME, MINOR)                                                                             \
    struct NAME##Type##MINOR                                                                                 \
    {                                                                                                        \
        Q_GADGET                                                                                             \
        QML_FOREIGN(oz::device::NAME)                                                                        \
        QML_NAMED_ELEMENT(NAME)                                                                              \
        QML_ADDED_IN_VERSION(1, MINOR)                                                                       \
    };

// The holder of an enumeration: its enumerators read Holder.Enumerator, and Holder.keyOf() names them. QML's
// tools know what extends a type only where that is registered too, and bases by their full names alone.
#define OZ_ENUMERATION(NAME)                                                                                 \
    namespace NAME##Names                                                                                    \
    {                                                                                                        \
        Q_NAMESPACE                                                                                          \
        QML_FOREIGN_NAMESPACE(oz::device::NAME)                                                              \
        QML_ANONYMOUS                                                                                        \
        QML_ADDED_IN_VERSION(1, 0)                                                                           \
    }                                                                                                        \
    class NAME##Holder : public oz::qml::EnumHolder                                                          \
    {                                                                                                        \
        Q_OBJECT                                                                                             \
        QML_NAMED_ELEMENT(NAME)                                                                              \
        QML_SINGLETON                                                                                        \
        QML_EXTENDED_NAMESPACE(oz::device::NAME)                                                             \
        QML_ADDED_IN_VERSION(1, 0)                                                                           \
    public:                                                                                                  \
        explicit NAME##Holder(QObject *parent = nullptr)                                                     \
            : EnumHolder(oz::device::NAME::staticMetaObject, parent)                                         \
        {                                                                                                    \
        }                                                                                                    \
    };

// QML takes the last of the signals of one name for the one that handlers mean. Of the pairs that end in
// numbers, all but one are emitted both: this one's instances in QML say the status as a number too.
template <>
inline void QQmlPrivate::createInto<oz::device::MiracastManager>(void *memory, void *)
{
    using oz::device::MiracastManager;
    using oz::device::MiracastStatus;
    auto *manager = new (memory) QQmlElement<MiracastManager>;
    QObject::connect(manager, qOverload<MiracastStatus::Type>(&MiracastManager::statusChanged), manager,
        qOverload<int>(&MiracastManager::statusChanged));
}

namespace oz::qml {

OZ_TYPE(BatteryInfo)
OZ_TYPE(CellularDataInterface)
OZ_TYPE(CellularNetworkInfo)
OZ_TYPE(CellularRadioInfo)
OZ_TYPE(DeviceInfo)
OZ_REVISION(DeviceInfo, 1)
OZ_REVISION(DeviceInfo, 2)
OZ_TYPE(DisplayInfo)
OZ_REVISION(DisplayInfo, 1)
OZ_REVISION(DisplayInfo, 2)
OZ_TYPE(HardwareInfo)
OZ_REVISION(HardwareInfo, 1)
OZ_REVISION(HardwareInfo, 2)
OZ_TYPE(Led)
OZ_TYPE(MiracastManager)
OZ_TYPE(NetworkDataUsage)
OZ_TYPE(SdCardInfo)
OZ_TYPE(SimCardInfo)
OZ_TYPE(VibrationController)
OZ_TYPE(WiFiDirect)
OZ_REVISION(WiFiDirect, 1)

OZ_ENUMERATION(BatteryChargingState)
OZ_ENUMERATION(BatteryCondition)
OZ_ENUMERATION(CellularBand)
OZ_ENUMERATION(CellularConnectionRequestResult)
OZ_ENUMERATION(CellularConnectionState)
OZ_ENUMERATION(CellularService)
OZ_ENUMERATION(CellularTechnology)
OZ_ENUMERATION(DeviceOrientation)
OZ_ENUMERATION(DisplayAspectType)
OZ_ENUMERATION(DisplayTechnology)
OZ_ENUMERATION(HdmiConnector)
OZ_ENUMERATION(LedColor)
OZ_ENUMERATION(MiracastConnectionState)
OZ_ENUMERATION(MiracastDeviceCategory)
OZ_ENUMERATION(MiracastDeviceSubCategory)
OZ_ENUMERATION(MiracastDisplayState)
OZ_ENUMERATION(MiracastResult)
OZ_ENUMERATION(MiracastStatus)
OZ_ENUMERATION(MiracastStopReason)
OZ_ENUMERATION(SdCardActivity)
OZ_ENUMERATION(SdCardState)
OZ_ENUMERATION(SimCardState)
OZ_ENUMERATION(UserActivityState)
OZ_ENUMERATION(WiFiDirectConnectionState)
OZ_ENUMERATION(WiFiDirectDeviceType)
OZ_ENUMERATION(WiFiDirectIntent)
OZ_ENUMERATION(WiFiDirectResult)
OZ_ENUMERATION(WiFiDirectRole)
OZ_ENUMERATION(WiFiDirectSecondaryDeviceType)
OZ_ENUMERATION(WiFiDirectWpsMethod)

} // namespace oz::qml
