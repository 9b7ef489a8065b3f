#pragma once

#include <oz/device/CellularBand.hpp>
#include <oz/device/CellularService.hpp>
#include <oz/device/CellularTechnology.hpp>
#include <oz/device/OzDeviceGlobal.hpp>

#include <QObject>

namespace oz::device {

class CellularRadioInfoPrivate;

/*!
 * The cellular radio as a whole: what the hardware can do, what the user has enabled, and what is in use.
 *
 * The values are there from construction on and change from the event loop; what the hardware can do is read
 * at construction and stays. Each reading stands for itself: what it lacks is off, empty or 0, and so is
 * everything that an object tells after a reading of it fails. Where one of the three objects cannot be
 * opened at construction, all values stay off, empty or 0 for the life of this object.
 *
 * Source: the attributes "power_status", "provider_capability", "network_technology" and "band_capability" of
 * the object "/pps/services/cellular/radioctrl/status_public", "configured_technologies" of
 * "status_persistent" beside it, and "data_services_status" and "data_roaming_status" of
 * "/pps/services/cds/cnice/status".
 *
 * Use an instance on the thread that created it, and do not move it to another. Failures are logged as
 * warnings of the category "oz.device".
 */
class OZ_DEVICE_EXPORT CellularRadioInfo : public QObject
{
    Q_OBJECT
    /*! True if the radio is switched on; false also for unknown. */
    Q_PROPERTY(bool poweredOn READ isPoweredOn NOTIFY poweredOnChanged FINAL)
    /*! The technologies that the hardware supports, as they were at construction; none for unknown. */
    Q_PROPERTY(oz::device::CellularTechnology::Types technologies READ technologies CONSTANT FINAL)
    /*! The services that the hardware supports, as they were at construction; none for unknown. */
    Q_PROPERTY(oz::device::CellularService::Types services READ services CONSTANT FINAL)
    /*! The bands that the hardware supports, as they were at construction; none for unknown. */
    Q_PROPERTY(oz::device::CellularBand::Types bands READ bands CONSTANT FINAL)
    /*! The technologies that the user has enabled; none for unknown. */
    Q_PROPERTY(oz::device::CellularTechnology::Types enabledTechnologies READ enabledTechnologies NOTIFY
            enabledTechnologiesChanged FINAL)
    /*! The technologies of the networks in use; none for unknown. */
    Q_PROPERTY(oz::device::CellularTechnology::Types activeTechnologies READ activeTechnologies NOTIFY
            activeTechnologiesChanged FINAL)
    /*! The number of networks in use, of which two of one technology count twice; 0 for unknown. */
    Q_PROPERTY(int networkCount READ networkCount NOTIFY networkCountChanged FINAL)
    /*! True if mobile data is on; false also for unknown. */
    Q_PROPERTY(bool dataEnabled READ isDataEnabled NOTIFY dataEnabledChanged REVISION 1 FINAL)
    /*! True if mobile data runs over a network other than the home network; false also for unknown. */
    Q_PROPERTY(bool dataRoaming READ isDataRoaming NOTIFY dataRoamingChanged REVISION 1 FINAL)

public:
    /*! Belongs to \a parent. */
    explicit CellularRadioInfo(QObject *parent = nullptr);
    ~CellularRadioInfo() override;

    //!@{
    /*! The getter of the property. */
    [[nodiscard]] bool isPoweredOn() const;
    [[nodiscard]] CellularTechnology::Types technologies() const;
    [[nodiscard]] CellularService::Types services() const;
    [[nodiscard]] CellularBand::Types bands() const;
    [[nodiscard]] CellularTechnology::Types enabledTechnologies() const;
    [[nodiscard]] CellularTechnology::Types activeTechnologies() const;
    [[nodiscard]] int networkCount() const;
    [[nodiscard]] bool isDataEnabled() const;
    [[nodiscard]] bool isDataRoaming() const;
    //!@}

Q_SIGNALS:
    //!@{
    /*!
     * The property of this name has changed. Of each object: poweredOnChanged, activeTechnologiesChanged,
     * networkCountChanged; enabledTechnologiesChanged; dataEnabledChanged, dataRoamingChanged.
     */
    void poweredOnChanged(bool poweredOn);
    void enabledTechnologiesChanged(oz::device::CellularTechnology::Types technologies);
    void activeTechnologiesChanged(oz::device::CellularTechnology::Types technologies);
    void networkCountChanged(int networkCount);
    Q_REVISION(1) void dataEnabledChanged(bool dataEnabled);
    Q_REVISION(1) void dataRoamingChanged(bool dataRoaming);
    //!@}

    /*! Follows each enabledTechnologiesChanged(CellularTechnology::Types) with the same set as a number. */
    void enabledTechnologiesChanged(int technologies);
    /*! Follows each activeTechnologiesChanged(CellularTechnology::Types) with the same set as a number. */
    void activeTechnologiesChanged(int technologies);

private:
    CellularRadioInfoPrivate *d;
};

} // namespace oz::device
