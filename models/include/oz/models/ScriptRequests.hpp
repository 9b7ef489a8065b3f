#pragma once

#include <oz/models/DeviceRequest.hpp>
#include <oz/models/DeviceRequests.hpp>

#include <QVariant>

namespace oz::models {

/*!
 * DeviceRequests for scripts: "DeviceRequests" in QML. A DeviceRequest that a call returns belongs to this
 * object while it runs, and to the caller afterwards.
 *
 * Use an instance on the thread that created it.
 */
class OZ_MODELS_EXPORT ScriptRequests : public QObject
{
    Q_OBJECT

public:
    /*! Belongs to \a parent. */
    explicit ScriptRequests(QObject *parent = nullptr);
    ~ScriptRequests() override;

    /*! DeviceRequests::connectProfile(). */
    Q_INVOKABLE oz::models::DeviceRequest *connectProfile(const QString &name);
    /*! DeviceRequests::disconnectProfile(). */
    Q_INVOKABLE oz::models::DeviceRequest *disconnectProfile(const QString &name);
    /*! DeviceRequests::scanPeers(). */
    Q_INVOKABLE oz::models::DeviceRequest *scanPeers();
    /*! DeviceRequests::connectPeer(), with a WiFiDirectIntent and a WiFiDirectWpsMethod. */
    Q_INVOKABLE oz::models::DeviceRequest *connectPeer(
        const QString &hardwareAddress, int intent, int wpsMethod, const QString &wpsPin = {});
    /*! DeviceRequests::cancelPeer(). */
    Q_INVOKABLE oz::models::DeviceRequest *cancelPeer();
    /*! DeviceRequests::startPeerSession(). */
    Q_INVOKABLE oz::models::DeviceRequest *startPeerSession();
    /*! DeviceRequests::stopPeerSession(). */
    Q_INVOKABLE oz::models::DeviceRequest *stopPeerSession(const QString &key);
    /*! DeviceRequests::peerIpAddress(). */
    Q_INVOKABLE oz::models::DeviceRequest *peerIpAddress(const QString &hardwareAddress);
    /*! DeviceRequests::scanSinks(). */
    Q_INVOKABLE oz::models::DeviceRequest *scanSinks();
    /*! DeviceRequests::connectSink(). */
    Q_INVOKABLE oz::models::DeviceRequest *connectSink(
        const QString &hardwareAddress, const QString &pin = {});
    /*! DeviceRequests::disconnectSink(). */
    Q_INVOKABLE oz::models::DeviceRequest *disconnectSink();
    /*! DeviceRequests::pauseSink(). */
    Q_INVOKABLE oz::models::DeviceRequest *pauseSink();
    /*! DeviceRequests::resumeSink(). */
    Q_INVOKABLE oz::models::DeviceRequest *resumeSink();
    /*! DeviceRequests::shutDownMiracast(). */
    Q_INVOKABLE oz::models::DeviceRequest *shutDownMiracast();
    /*! DeviceRequests::flash(), with a LedColor and a whole number; fails likewise if one of them is missing
     * or of another type. */
    Q_INVOKABLE oz::models::DeviceRequest *flash(const QVariant &color = {}, const QVariant &count = {});
    /*! DeviceRequests::vibrate(). */
    Q_INVOKABLE oz::models::DeviceRequest *vibrate(uint milliseconds);

private:
    DeviceRequest *follow(const QFuture<RequestResult> &future);

    DeviceRequests m_requests;
};

} // namespace oz::models
