#pragma once

#include <oz/device/HdmiConnector.hpp>
#include <oz/device/OzDeviceGlobal.hpp>

#include <QObject>
#include <QString>

namespace oz::device {

class HardwareInfoPrivate;

/*!
 * The device itself: its identifiers, its names, its processors and its parts.
 *
 * All this is fixed for the life of the device, and no signal tells of it. Each call reads the system's
 * object anew and keeps nothing all the same, so a value that the system does not know yet is there as soon
 * as it does, and the name that a user gives the device may be another next time. What cannot be read is
 * empty, 0, false or Unknown, and -1 for the speed of a processor.
 *
 * Source: "/pps/services/private/deviceproperties" for pin, serialNumber, imei and meid (the files' modes
 * decide who may read them, and they appear in no log); "/pps/services/deviceproperties" for the hardware
 * identifier and the names; "/pps/services/hw_info/inventory" for everything else.
 *
 * The getters may be called from any thread, but do not move an instance to another. Failures are logged as
 * warnings of the category "oz.device", at each call.
 */
class OZ_DEVICE_EXPORT HardwareInfo : public QObject
{
    Q_OBJECT
    /*! The device's personal identification number; empty for unknown, like all texts here. */
    Q_PROPERTY(QString pin READ pin CONSTANT FINAL)
    /*! The number that the device was given when it was made. */
    Q_PROPERTY(QString serialNumber READ serialNumber CONSTANT FINAL)
    /*! The equipment identity of a GSM, UMTS or LTE device. */
    Q_PROPERTY(QString imei READ imei CONSTANT FINAL)
    /*! The equipment identity of a CDMA device. */
    Q_PROPERTY(QString meid READ meid CONSTANT FINAL)
    /*! The identifier of the hardware model. */
    Q_PROPERTY(QString hardwareId READ hardwareId CONSTANT FINAL)
    /*! The name that the user gave the device. */
    Q_PROPERTY(QString deviceName READ deviceName CONSTANT FINAL)
    /*! The name under which such devices are sold. */
    Q_PROPERTY(QString modelName READ modelName CONSTANT FINAL)
    /*! The number of the model, which tells variants apart. */
    Q_PROPERTY(QString modelNumber READ modelNumber CONSTANT FINAL)
    /*!
     * True if the device has a keyboard of keys. The inventory says "none", in any letter case, where it has
     * not, and where the inventory says nothing the answer is false too: an application that took a keyboard
     * for granted would leave its user without any.
     */
    Q_PROPERTY(bool isPhysicalKeyboardDevice READ isPhysicalKeyboardDevice CONSTANT FINAL)
    /*! The HDMI connector of the device; Unknown where the inventory does not say. */
    Q_PROPERTY(oz::device::HdmiConnector::Type hdmiConnector READ hdmiConnector CONSTANT REVISION 1 FINAL)
    /*! This and the following are true for the devices of one family, known by their hardware identifiers. */
    Q_PROPERTY(bool isTrackpadDevice READ isTrackpadDevice CONSTANT REVISION 2 FINAL)
    /*! True if the device has keys to take and end a call. */
    Q_PROPERTY(bool hasPhysicalPhoneKeys READ hasPhysicalPhoneKeys CONSTANT REVISION 2 FINAL)
    /*! True if the device has a key to go back. */
    Q_PROPERTY(bool hasPhysicalBackButton READ hasPhysicalBackButton CONSTANT REVISION 2 FINAL)
    /*! True if the device has a key for menus. */
    Q_PROPERTY(bool hasPhysicalMenuButton READ hasPhysicalMenuButton CONSTANT REVISION 2 FINAL)

public:
    /*! Belongs to \a parent. */
    explicit HardwareInfo(QObject *parent = nullptr);
    ~HardwareInfo() override;

    //!@{
    /*! The getter of the property. */
    [[nodiscard]] QString pin() const;
    [[nodiscard]] QString serialNumber() const;
    [[nodiscard]] QString imei() const;
    [[nodiscard]] QString meid() const;
    [[nodiscard]] QString hardwareId() const;
    [[nodiscard]] QString deviceName() const;
    [[nodiscard]] QString modelName() const;
    [[nodiscard]] QString modelNumber() const;
    [[nodiscard]] bool isPhysicalKeyboardDevice() const;
    [[nodiscard]] HdmiConnector::Type hdmiConnector() const;
    [[nodiscard]] bool isTrackpadDevice() const;
    [[nodiscard]] bool hasPhysicalPhoneKeys() const;
    [[nodiscard]] bool hasPhysicalBackButton() const;
    [[nodiscard]] bool hasPhysicalMenuButton() const;
    //!@}

    /*! The number of processors; 0 for unknown. */
    [[nodiscard]] int processorCount() const;
    /*! The same, for an object that is not const. */
    [[nodiscard]] int processorCount();
    /*!
     * The speed in MHz of the processor \a index, 0 to processorCount() - 1; -1 where there is no such
     * processor or its speed is not known.
     */
    [[nodiscard]] int processorSpeed(int index) const;
    /*! The same, for an object that is not const. */
    [[nodiscard]] int processorSpeed(int index);
    /*!
     * The model of the processor \a index, 0 to processorCount() - 1; empty where there is no such processor
     * or its model is not known.
     */
    [[nodiscard]] QString processorModel(int index) const;
    /*! The same, for an object that is not const. */
    [[nodiscard]] QString processorModel(int index);

private:
    HardwareInfoPrivate *d;
};

} // namespace oz::device
