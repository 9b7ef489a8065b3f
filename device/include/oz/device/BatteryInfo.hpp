#pragma once

#include <oz/device/BatteryChargingState.hpp>
#include <oz/device/BatteryCondition.hpp>
#include <oz/device/OzDeviceGlobal.hpp>

#include <QObject>
#include <QString>

namespace oz::device {

class BatteryInfoPrivate;

/*!
 * The battery: its charge, what it is doing, its condition, and where a wireless charger feeds it.
 *
 * The values are there from construction on and change from the event loop. Each reading stands for itself:
 * what it lacks becomes unknown, and after a reading that fails everything is unknown until the next good
 * one. Where the battery's object cannot be opened at construction, everything stays unknown for the life of
 * this object.
 *
 * Source: the attributes "SystemInfo", "ChargerInfo", "BatteryInfo" and "WlcSourceInfo" of the object
 * "/pps/system/BattMgr/status". The battery is the one that "BatteryInfo" calls the active one.
 *
 * Use an instance on the thread that created it, and do not move it to another. Failures are logged as
 * warnings of the category "oz.device".
 */
class OZ_DEVICE_EXPORT BatteryInfo : public QObject
{
    Q_OBJECT
    /*! The charge in percent, 0 to 100; -1 for unknown. */
    Q_PROPERTY(int level READ level NOTIFY levelChanged FINAL)
    /*! The charging state, announced together with the level; Unknown where the system does not say.
     */
    Q_PROPERTY(
        oz::device::BatteryChargingState::Type chargingState READ chargingState NOTIFY levelChanged FINAL)
    /*! True if there is a battery in the device; false also for unknown. */
    Q_PROPERTY(bool present READ isPresent NOTIFY presentChanged FINAL)
    /*! The condition of the battery; Unknown where the system does not say. */
    Q_PROPERTY(oz::device::BatteryCondition::Type condition READ condition NOTIFY conditionChanged FINAL)
    /*! The charge that the battery holds when full, in mAh; -1 for unknown. */
    Q_PROPERTY(int fullChargeCapacity READ fullChargeCapacity NOTIFY fullChargeCapacityChanged FINAL)
    /*! How often the battery has been charged and discharged; -1 for unknown. */
    Q_PROPERTY(int cycleCount READ cycleCount NOTIFY cycleCountChanged FINAL)
    /*!
     * The temperature in degrees Celsius; a quiet NaN for unknown. As NaN differs from itself,
     * temperatureChanged comes with every reading while the temperature is unknown. Ask std::isnan(), not the
     * operator ==.
     */
    Q_PROPERTY(float temperature READ temperature NOTIFY temperatureChanged FINAL)
    /*! The identifier of the receiver on the wireless charger; empty where there is none, and for unknown. */
    Q_PROPERTY(QString rxid READ rxid NOTIFY rxidChanged FINAL)

public:
    /*! Belongs to \a parent. */
    explicit BatteryInfo(QObject *parent = nullptr);
    ~BatteryInfo() override;

    //!@{
    /*! The getter of the property. */
    [[nodiscard]] int level() const;
    [[nodiscard]] BatteryChargingState::Type chargingState() const;
    [[nodiscard]] bool isPresent() const;
    [[nodiscard]] BatteryCondition::Type condition() const;
    [[nodiscard]] int fullChargeCapacity() const;
    [[nodiscard]] int cycleCount() const;
    [[nodiscard]] float temperature() const;
    [[nodiscard]] QString rxid() const;
    //!@}

Q_SIGNALS:
    /*! The level, the charging state, or both changed. */
    void levelChanged(int level, oz::device::BatteryChargingState::Type newChargingState);
    //!@{
    /*!
     * The property of this name has changed. A reading announces what has changed in the order of this list;
     * levelChanged comes first.
     */
    void presentChanged(bool present);
    void conditionChanged(oz::device::BatteryCondition::Type condition);
    void fullChargeCapacityChanged(int fullChargeCapacity);
    void cycleCountChanged(int cycleCount);
    void temperatureChanged(float temperature);
    void rxidChanged(QString rxid);
    //!@}

    /*! Follows each levelChanged(int, BatteryChargingState::Type) with the state as a number. */
    void levelChanged(int level, int newChargingState);
    /*! Follows each conditionChanged(BatteryCondition::Type) with the same value as a number. */
    void conditionChanged(int condition);

private:
    BatteryInfoPrivate *d;
};

} // namespace oz::device
