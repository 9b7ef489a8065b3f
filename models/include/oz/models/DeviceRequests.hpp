#pragma once

#include <oz/device/LedColor.hpp>
#include <oz/device/WiFiDirectIntent.hpp>
#include <oz/device/WiFiDirectWpsMethod.hpp>
#include <oz/models/OzModelsGlobal.hpp>
#include <oz/models/RequestResult.hpp>

#include <QFuture>

#include <memory>

namespace oz::models {

/*!
 * Requests that do not wait. Each is a future, and runs on a thread that this object has for its subject, so
 * that a silent service delays only further requests to the same subject.
 *
 * A future's progress becomes 1 when the request is sent. A cancelled future has no result; it finishes at
 * once, even while its service is silent. A request that has not begun is then never sent. One that was sent
 * is undone by the opposite request that is given below, after the service's answer if the request waits for
 * it; a request without an opposite is not undone. Continuations without a context object run on a thread of
 * this object, and delay others while they run.
 *
 * Requests of one subject, such as one data profile or the LED, run one after the other if they wait for the
 * service's answer.
 *
 * Destroying this object ends its data connections and its flashes without waiting, and cancels its
 * unfinished futures.
 *
 * Any thread may call it.
 */
class OZ_MODELS_EXPORT DeviceRequests
{
public:
    DeviceRequests();
    ~DeviceRequests();
    Q_DISABLE_COPY_MOVE(DeviceRequests)

    /*!
     * CellularDataInterface::requestConnect(). This object owns the connection. Finished when the profile is
     * connected, when it is refused, or when it fails. The reason is "ConnectionFailed" if the profile is
     * disconnected again, or does not begin to connect within oz::graceTime() after the answer. The result is
     * NotPossible while a connection of this object is established or pending. Cancelled, it is disconnected.
     */
    [[nodiscard]] QFuture<RequestResult> connectProfile(const QString &name);
    /*! CellularDataInterface::requestDisconnect(), of a connection of this object. */
    [[nodiscard]] QFuture<RequestResult> disconnectProfile(const QString &name);

    /*! WiFiDirect::requestScan(). */
    [[nodiscard]] QFuture<RequestResult> scanPeers();
    /*!
     * WiFiDirect::requestConnect(). Finished when the phone is connected, when it is refused, or when it
     * fails. The reason is "ConnectionFailed" if the phone is disconnected again, as for a wrong PIN, or does
     * not begin to connect within oz::graceTime() after the answer. If the service's object is removed
     * meanwhile, the future goes on until it is cancelled. Cancelled, it is followed by
     * cancelConnectRequest(); a peer that is connected by then stays connected.
     */
    [[nodiscard]] QFuture<RequestResult> connectPeer(const QString &hardwareAddress,
        device::WiFiDirectIntent::Type intent, device::WiFiDirectWpsMethod::Type wpsMethod,
        const QString &wpsPin);
    /*! WiFiDirect::cancelConnectRequest(). */
    [[nodiscard]] QFuture<RequestResult> cancelPeer();
    /*! WiFiDirect::requestStartSession(); finished when the session is open, with its key as the value.
     * Cancelled, it is closed again. */
    [[nodiscard]] QFuture<RequestResult> startPeerSession();
    /*! WiFiDirect::requestStopSession(), for a session that any client opened. */
    [[nodiscard]] QFuture<RequestResult> stopPeerSession(const QString &key);
    /*! WiFiDirect::ipAddress(), which is the value; fails with DeviceNotFound without one. */
    [[nodiscard]] QFuture<RequestResult> peerIpAddress(const QString &hardwareAddress);

    /*! MiracastManager::requestScan(); finished when the scan is over. To list what a scan finds, use the
     * scan of a MiracastSinkModel. */
    [[nodiscard]] QFuture<RequestResult> scanSinks();

    /*!
     * MiracastManager::requestConnect(); finished when the connection is established or has failed.
     * Cancelled, it is followed by requestDisconnect(). If the service ends before it answers, the future
     * goes on until it is cancelled.
     */
    [[nodiscard]] QFuture<RequestResult> connectSink(const QString &hardwareAddress, const QString &pin);
    /*! MiracastManager::requestDisconnect(), likewise. */
    [[nodiscard]] QFuture<RequestResult> disconnectSink();
    /*! MiracastManager::requestPause(), likewise. Cancelled, it is followed by requestResume(). */
    [[nodiscard]] QFuture<RequestResult> pauseSink();
    /*! MiracastManager::requestResume(), likewise. Cancelled, it is followed by requestPause(). */
    [[nodiscard]] QFuture<RequestResult> resumeSink();
    /*! MiracastManager::requestShutdown(), likewise; it cannot be undone. */
    [[nodiscard]] QFuture<RequestResult> shutDownMiracast();

    /*!
     * Led::flash(count); finished when all flashes have been seen. Cancelled, the LED goes out. Fails at once
     * with "InvalidArgument", and logs a warning of the category "oz.models", if the \a color is None or no
     * enumerator. Callers may ignore the future.
     */
    QFuture<RequestResult> flash(device::LedColor::Type color, int count);
    /*!
     * VibrationController::start() for this many \a milliseconds; finished after that time. Cancelled, the
     * motor stops. Fails at once if the vibrator is not supported. Callers may ignore the future.
     */
    QFuture<RequestResult> vibrate(uint milliseconds);

private:
    class Private;
    std::unique_ptr<Private> d;
};

} // namespace oz::models
