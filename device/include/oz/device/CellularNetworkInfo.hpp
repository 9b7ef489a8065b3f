#pragma once

#include <oz/device/CellularService.hpp>
#include <oz/device/CellularTechnology.hpp>
#include <oz/device/OzDeviceGlobal.hpp>

#include <QObject>
#include <QString>

namespace oz::device {

class CellularNetworkInfoPrivate;

/*!
 * One of the networks that the radio uses: 0 is the primary network, 1 the CDMA 1X network beside it. Other
 * numbers stand for no network.
 *
 * The technologies in use tell if there is a CDMA 1X network: cdma_1x, evdo or lte among them is
 * enough. So on a phone that uses LTE and has no CDMA, index 1 says Cdma1X too, and its values are empty or
 * 0.
 *
 * The values are there from construction on and change from the event loop. When the technology behind the
 * index changes, all values are read anew and announced before technologyChanged. Each reading stands for
 * itself: what it lacks is empty, 0 or false, and so is everything after a reading that fails, while there is
 * no network, and where an object of the network cannot be opened.
 *
 * Source: the technologies in use, as CellularRadioInfo knows them, choose the pair of objects
 * "status_cell_public" and "status_cell_private", or for Cdma1X "status_cell_cdma_public" and
 * "status_cell_cdma_private", in "/pps/services/cellular/radioctrl/". Of them, the attributes
 * "network_service", "network_name", "serving_network", "signal_strength" and "roaming" are read, and
 * "network_name" of the object
 * "/pps/services/rum/csm/status_public".
 *
 * Use an instance on the thread that created it, and do not move it to another. Failures are logged as
 * warnings of the category "oz.device".
 */
class OZ_DEVICE_EXPORT CellularNetworkInfo : public QObject
{
    Q_OBJECT
    /*! Any number may be set; 0 unless the constructor is given another. It has no unknown value. */
    Q_PROPERTY(int index READ index WRITE setIndex NOTIFY indexChanged FINAL)
    /*! None where there is no network of this index. */
    Q_PROPERTY(oz::device::CellularTechnology::Type technology READ technology NOTIFY technologyChanged FINAL)
    /*! The services that the network offers now, bit by bit as published. */
    Q_PROPERTY(oz::device::CellularService::Types services READ services NOTIFY servicesChanged FINAL)
    /*! The name of the operator; empty for unknown. */
    Q_PROPERTY(QString name READ name NOTIFY nameChanged FINAL)
    /*! The country of the network, as published: three digits; empty for unknown. */
    Q_PROPERTY(QString mobileCountryCode READ mobileCountryCode NOTIFY mobileCountryCodeChanged FINAL)
    /*! The network within its country, as published: two or three digits; empty for unknown. */
    Q_PROPERTY(QString mobileNetworkCode READ mobileNetworkCode NOTIFY mobileNetworkCodeChanged FINAL)
    /*! The received signal strength in dBm, as published; 0 for unknown. */
    Q_PROPERTY(int signalStrength READ signalStrength NOTIFY signalStrengthChanged FINAL)
    /*! True if the device roams in this network, and the user is to know it; false also for unknown. */
    Q_PROPERTY(bool roaming READ isRoaming NOTIFY roamingChanged FINAL)
    /*! The cell, of GSM, UMTS and LTE networks; 0 for unknown. */
    Q_PROPERTY(int cellId READ cellId NOTIFY cellIdChanged FINAL)
    /*! The location area, of GSM and UMTS networks; 0 for unknown. */
    Q_PROPERTY(int locationAreaCode READ locationAreaCode NOTIFY locationAreaCodeChanged FINAL)
    /*! The tracking area, of LTE networks; 0 for unknown. */
    Q_PROPERTY(int trackingAreaCode READ trackingAreaCode NOTIFY trackingAreaCodeChanged FINAL)
    /*! The base station, of CDMA networks; 0 for unknown. */
    Q_PROPERTY(int baseStationId READ baseStationId NOTIFY baseStationIdChanged FINAL)
    /*! The network, of CDMA networks; 0 for unknown. */
    Q_PROPERTY(int networkId READ networkId NOTIFY networkIdChanged FINAL)
    /*! The system, of CDMA networks; 0 for unknown. */
    Q_PROPERTY(int systemId READ systemId NOTIFY systemIdChanged FINAL)
    /*!
     * The name to show to the user, of whatever index; empty for unknown. Where the index has no technology
     * at construction, it is first read from the event loop.
     */
    Q_PROPERTY(QString displayName READ displayName NOTIFY displayNameChanged FINAL)

public:
    /*! The primary network. */
    explicit CellularNetworkInfo(QObject *parent = nullptr);
    /*! The network with this \a index. */
    explicit CellularNetworkInfo(int index, QObject *parent = nullptr);
    ~CellularNetworkInfo() override;

    //!@{
    /*! The getter of the property. */
    [[nodiscard]] int index() const;
    [[nodiscard]] CellularTechnology::Type technology() const;
    [[nodiscard]] CellularService::Types services() const;
    [[nodiscard]] QString name() const;
    [[nodiscard]] QString mobileCountryCode() const;
    [[nodiscard]] QString mobileNetworkCode() const;
    [[nodiscard]] int signalStrength() const;
    [[nodiscard]] bool isRoaming() const;
    [[nodiscard]] int cellId() const;
    [[nodiscard]] int locationAreaCode() const;
    [[nodiscard]] int trackingAreaCode() const;
    [[nodiscard]] int baseStationId() const;
    [[nodiscard]] int networkId() const;
    [[nodiscard]] int systemId() const;
    [[nodiscard]] QString displayName() const;
    //!@}

public Q_SLOTS:
    /*! Turns to another network. What differs there is announced first, indexChanged last. */
    void setIndex(int index);

Q_SIGNALS:
    //!@{
    /*!
     * The property of this name has changed. A reading announces displayNameChanged first, then the rest in
     * the order of this list, and technologyChanged after them; indexChanged comes last.
     */
    void indexChanged(int index);
    void technologyChanged(oz::device::CellularTechnology::Type tech);
    void servicesChanged(oz::device::CellularService::Types services);
    void nameChanged(QString name);
    void mobileCountryCodeChanged(QString mcc);
    void mobileNetworkCodeChanged(QString mnc);
    void signalStrengthChanged(int rssi);
    void roamingChanged(bool roaming);
    void cellIdChanged(int cellId);
    void locationAreaCodeChanged(int lac);
    void trackingAreaCodeChanged(int tac);
    void baseStationIdChanged(int bid);
    void networkIdChanged(int nid);
    void systemIdChanged(int sid);
    void displayNameChanged(QString name);
    //!@}

    /*! Follows each technologyChanged(CellularTechnology::Type) with the same value as a number. */
    void technologyChanged(int tech);
    /*! Follows each servicesChanged(CellularService::Types) with the same set as a number. */
    void servicesChanged(int services);

private:
    CellularNetworkInfoPrivate *d;
};

} // namespace oz::device
