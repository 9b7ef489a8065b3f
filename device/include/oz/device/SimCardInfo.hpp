#pragma once

#include <oz/device/OzDeviceGlobal.hpp>
#include <oz/device/SimCardState.hpp>

#include <QObject>
#include <QString>

namespace oz::device {

class SimCardInfoPrivate;

/*!
 * The SIM card in the first slot: its state and its identifiers.
 *
 * The values are there from construction on and change from the event loop. Each reading stands for itself:
 * what it lacks is NotDetected or empty, and so is everything after a reading that fails. An object of the
 * card's two that cannot be opened at construction leaves its values so for the life of this object.
 *
 * Source: the attributes "uicc_state", "hplmn" and "iccid" of the object
 * "/pps/services/cellular/uicc/card0/status_private", and "imsi" of "status_restricted" beside it. The files'
 * modes decide who may read them; the identifiers appear in no log.
 *
 * Use an instance on the thread that created it, and do not move it to another. Failures are logged as
 * warnings of the category "oz.device".
 */
class OZ_DEVICE_EXPORT SimCardInfo : public QObject
{
    Q_OBJECT
    /*! NotDetected also for unknown. */
    Q_PROPERTY(oz::device::SimCardState::Type state READ state NOTIFY stateChanged FINAL)
    /*! The country of the home network, as published: three digits; empty for unknown. */
    Q_PROPERTY(QString mobileCountryCode READ mobileCountryCode NOTIFY mobileCountryCodeChanged FINAL)
    /*! The home network within its country, as published: two or three digits; empty for unknown. */
    Q_PROPERTY(QString mobileNetworkCode READ mobileNetworkCode NOTIFY mobileNetworkCodeChanged FINAL)
    /*! The number of the card (ICCID); empty for unknown. */
    Q_PROPERTY(QString serialNumber READ serialNumber NOTIFY serialNumberChanged FINAL)
    /*! The identifier of the subscriber (IMSI); empty for unknown. */
    Q_PROPERTY(
        QString subscriberIdentifier READ subscriberIdentifier NOTIFY subscriberIdentifierChanged FINAL)

public:
    /*! Belongs to \a parent. */
    explicit SimCardInfo(QObject *parent = nullptr);
    ~SimCardInfo() override;

    //!@{
    /*! The getter of the property. */
    [[nodiscard]] SimCardState::Type state() const;
    [[nodiscard]] QString mobileCountryCode() const;
    [[nodiscard]] QString mobileNetworkCode() const;
    [[nodiscard]] QString serialNumber() const;
    [[nodiscard]] QString subscriberIdentifier() const;
    //!@}

Q_SIGNALS:
    //!@{
    /*!
     * The property of this name has changed. A reading announces what has changed in the order of this list.
     */
    void stateChanged(oz::device::SimCardState::Type state);
    void mobileCountryCodeChanged(QString mcc);
    void mobileNetworkCodeChanged(QString mnc);
    void serialNumberChanged(QString serialNumber);
    void subscriberIdentifierChanged(QString subscriberIdentifier);
    //!@}

    /*! Follows each stateChanged(SimCardState::Type) with the same value as a number. */
    void stateChanged(int state);

private:
    SimCardInfoPrivate *d;
};

} // namespace oz::device
