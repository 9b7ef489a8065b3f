#pragma once

#include <oz/device/MiracastConnectionState.hpp>
#include <oz/device/MiracastDeviceCategory.hpp>
#include <oz/device/MiracastDeviceSubCategory.hpp>
#include <oz/device/MiracastDisplayState.hpp>
#include <oz/device/MiracastResult.hpp>
#include <oz/device/MiracastStatus.hpp>
#include <oz/device/MiracastStopReason.hpp>
#include <oz/device/OzDeviceGlobal.hpp>

#include <QObject>
#include <QSize>
#include <QString>

namespace oz::device {

class MiracastManagerPrivate;

/*!
 * Miracast: wireless displays around the device (sinks), and the session with one that shows the device's
 * screen.
 *
 * The values are there from construction on and change from the event loop. A reading that fails changes
 * nothing, and neither does what the service takes back or a service that goes away: each value is what was
 * told last, so that connectionState may say Connected of a service that is gone. Where the device has no
 * Miracast, or the service's object cannot be opened, at construction, all values stay empty or Unknown for
 * the life of this object, and requests do nothing, silently.
 *
 * Requests do not wait: each is written to the service, and the signal with its name and "Completed" tells
 * the MiracastResult, on the instance that asked and on no other. A request that cannot be written is logged,
 * RequestError has its error, and no signal follows; nor does one where the service goes away before it
 * answers. Two requests of one kind
 * within a millisecond are one to the service's answer, and one signal.
 *
 * Source: the object "/pps/services/miracast/status", after a scan "/pps/services/miracast/sinks", and
 * "/pps/services/hw_info/inventory" for whether there is Miracast. Requests go to
 * "/pps/services/miracast/control".
 *
 * Use an instance on the thread that created it, and do not move it to another. Failures are logged as
 * warnings of the category "oz.device".
 */
class OZ_DEVICE_EXPORT MiracastManager : public QObject
{
    Q_OBJECT
    /*! The hardware address of the sink that is connected or being connected; empty for none. */
    Q_PROPERTY(QString hardwareAddress READ hardwareAddress NOTIFY hardwareAddressChanged FINAL)
    /*! Unknown before the service has said anything. */
    Q_PROPERTY(oz::device::MiracastConnectionState::Type connectionState READ connectionState NOTIFY
            connectionStateChanged FINAL)
    /*! The name of that sink, which is whatever text it chose; empty for none. */
    Q_PROPERTY(QString deviceName READ deviceName NOTIFY deviceNameChanged FINAL)
    /*! The size in pixels of what that sink shows; 0 by 0 for unknown. */
    Q_PROPERTY(QSize devicePixelSize READ devicePixelSize NOTIFY devicePixelSizeChanged FINAL)
    /*! The state of the session; Unknown before the service has said anything. */
    Q_PROPERTY(oz::device::MiracastDisplayState::Type displayState READ displayState NOTIFY
            displayStateChanged FINAL)
    /*! The kind of device that this sink is; Unknown where it does not say. */
    Q_PROPERTY(oz::device::MiracastDeviceCategory::Type deviceCategory READ deviceCategory NOTIFY
            deviceTypeChanged FINAL)
    /*! More exactly what kind of device that sink is; Unknown where it does not say. */
    Q_PROPERTY(oz::device::MiracastDeviceSubCategory::Type deviceSubCategory READ deviceSubCategory NOTIFY
            deviceTypeChanged FINAL)
    /*! The identifier of the session; empty for none. */
    Q_PROPERTY(QString sessionId READ sessionId NOTIFY sessionIdChanged FINAL)
    /*! Why the wireless-display service has stopped. */
    Q_PROPERTY(oz::device::MiracastStopReason::Type stopReason READ stopReason NOTIFY stopReasonChanged FINAL)
    /*! The status of the wireless-display service. */
    Q_PROPERTY(oz::device::MiracastStatus::Type status READ status NOTIFY statusChanged FINAL)
    /*! As isSupported(): a property of the device, but read anew at each call. */
    Q_PROPERTY(bool isSupported READ isSupported CONSTANT FINAL)

public:
    /*! Belongs to \a parent. */
    explicit MiracastManager(QObject *parent = nullptr);
    ~MiracastManager() override;

    //!@{
    /*! The getter of the property. */
    [[nodiscard]] QString hardwareAddress() const;
    [[nodiscard]] MiracastConnectionState::Type connectionState() const;
    [[nodiscard]] QString deviceName() const;
    [[nodiscard]] QSize devicePixelSize() const;
    [[nodiscard]] MiracastDisplayState::Type displayState() const;
    [[nodiscard]] MiracastDeviceCategory::Type deviceCategory() const;
    [[nodiscard]] MiracastDeviceSubCategory::Type deviceSubCategory() const;
    [[nodiscard]] QString sessionId() const;
    [[nodiscard]] MiracastStopReason::Type stopReason() const;
    [[nodiscard]] MiracastStatus::Type status() const;
    //!@}

    /*!
     * Asks the service to connect to the sink at \a hardwareAddress, and to show the screen there. \a pin is
     * empty for none. Both go to the service as they stand: what breaks a JSON text, such as a quote, makes
     * the request malformed.
     */
    Q_INVOKABLE void requestConnect(const QString &hardwareAddress, const QString &pin);
    /*! Asks the service to end the session, and itself. */
    Q_INVOKABLE void requestShutdown();
    /*!
     * Tells the service which application will use it: the dynamic property "miracast_name" (text), and
     * "miracast_persistent" (a number that is not 0 where the service is to keep that), which are to be set
     * on this object before. No signal follows.
     */
    Q_INVOKABLE void warmup();
    /*! True if the device has Miracast, as its inventory says. Reads that at each call. */
    [[nodiscard]] Q_INVOKABLE static bool isSupported();

public Q_SLOTS:
    /*! Asks the service to look for sinks; deviceDiscovered tells each, and scanCompleted follows. */
    void requestScan();
    /*! Asks the service to end the session, or what is being connected. */
    void requestDisconnect();
    /*! Asks the service to go on with the session without showing the screen. */
    void requestPause();
    /*! Asks the service to show the screen again. */
    void requestResume();

Q_SIGNALS:
    /*! A scan of this instance has found a sink. */
    void deviceDiscovered(QString deviceName, QString hardwareAddress,
        oz::device::MiracastDeviceCategory::Type category,
        oz::device::MiracastDeviceSubCategory::Type subCategory);
    /*! A sink is connected, whoever asked for it. */
    void deviceConnected(QString deviceName, QString hardwareAddress,
        oz::device::MiracastDeviceCategory::Type category,
        oz::device::MiracastDeviceSubCategory::Type subCategory);
    /*! The connection state has gone from Connected straight to Disconnected; not by way of another state,
     * and not where the service went away. */
    void deviceDisconnected();
    /*! How a scan of this instance ended; after Success, every sink has been told by deviceDiscovered. */
    void scanCompleted(oz::device::MiracastResult::Type result);
    /*! How requestConnect() of this instance ended. */
    void connectCompleted(oz::device::MiracastResult::Type result);
    /*! How requestPause() of this instance ended. */
    void pauseCompleted(oz::device::MiracastResult::Type result);
    /*! How requestResume() of this instance ended. */
    void resumeCompleted(oz::device::MiracastResult::Type result);
    /*! How requestDisconnect() of this instance ended. */
    void disconnectCompleted(oz::device::MiracastResult::Type result);
    /*! How requestShutdown() of this instance ended. */
    void shutdownCompleted(oz::device::MiracastResult::Type result);
    //!@{
    /*!
     * The property of this name has changed. A reading announces deviceNameChanged, hardwareAddressChanged,
     * deviceTypeChanged, connectionStateChanged (then deviceConnected or deviceDisconnected),
     * displayStateChanged, sessionIdChanged, devicePixelSizeChanged, stopReasonChanged and statusChanged in
     * this order, and then the completion of a request.
     */
    void connectionStateChanged(oz::device::MiracastConnectionState::Type state);
    void hardwareAddressChanged(QString hardwareAddress);
    void deviceNameChanged(QString deviceName);
    void devicePixelSizeChanged(QSize devicePixelSize);
    void stopReasonChanged(oz::device::MiracastStopReason::Type stopReason);
    void statusChanged(oz::device::MiracastStatus::Type status);
    void displayStateChanged(oz::device::MiracastDisplayState::Type state);
    void deviceTypeChanged(oz::device::MiracastDeviceCategory::Type category,
        oz::device::MiracastDeviceSubCategory::Type subCategory);
    void sessionIdChanged(QString sessionId);
    //!@}

    //!@{
    /*! Follows its namesake at once, with the enumerations as numbers. */
    void deviceTypeChanged(int category, int subCategory);
    void deviceDiscovered(QString deviceName, QString hardwareAddress, int category, int subCategory);
    void deviceConnected(QString deviceName, QString hardwareAddress, int category, int subCategory);
    //!@}
    /*! Follows its namesake with the same result as a number. */
    void scanCompleted(int result);
    /*! Follows its namesake with the same result as a number. */
    void connectCompleted(int result);
    /*! Follows its namesake with the same result as a number. */
    void pauseCompleted(int result);
    /*! Follows its namesake with the same result as a number. */
    void resumeCompleted(int result);
    /*! Follows its namesake with the same result as a number. */
    void disconnectCompleted(int result);
    //!@{
    /*! Follows its namesake at once, with the enumeration as a number. */
    void connectionStateChanged(int state);
    void displayStateChanged(int state);
    void stopReasonChanged(int stopReason);
    //!@}
    /*! Never emitted. */
    void statusChanged(int status);
    /*! Follows its namesake with the same result as a number. */
    void shutdownCompleted(int result);

private:
    MiracastManagerPrivate *d;
};

} // namespace oz::device
