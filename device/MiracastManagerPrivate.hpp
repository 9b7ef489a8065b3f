#pragma once

#include <oz/device/MiracastManager.hpp>

#include <QStringList>
#include <QVariantMap>

namespace oz {
class PpsObject;
}

namespace oz::device {

class MiracastManagerPrivate : public QObject
{
    Q_OBJECT

public:
    /*! What the service has told. */
    struct State
    {
        MiracastConnectionState::Type connectionState = MiracastConnectionState::Unknown;
        QString hardwareAddress;
        QString deviceName;
        MiracastDisplayState::Type displayState = MiracastDisplayState::Unknown;
        MiracastDeviceCategory::Type category = MiracastDeviceCategory::Unknown;
        MiracastDeviceSubCategory::Type subCategory = MiracastDeviceSubCategory::Unknown;
        QString sessionId;
        QSize devicePixelSize{0, 0};
        MiracastStopReason::Type stopReason = MiracastStopReason::Unknown;
        MiracastStatus::Type status = MiracastStatus::Unknown;
    };

    struct Request;

    explicit MiracastManagerPrivate(MiracastManager *q);

    [[nodiscard]] static bool isSupported();
    [[nodiscard]] const State &state() const { return m_state; }

    void requestScan();
    void requestConnect(const QString &hardwareAddress, const QString &pin);
    void requestPause();
    void requestResume();
    void requestDisconnect();
    void requestShutdown();
    void warmup();

private Q_SLOTS:
    void onStatusReadyRead();

private:
    [[nodiscard]] static QString getRequestToken(const QString &prefix);
    /*! Writes \a message; \a logged is what a warning may say of it. */
    void sendCommand(const QString &token, const QString &message, const QString &logged);
    void send(const Request &request, const QString &first = {}, const QString &second = {});

    [[nodiscard]] QVariantMap readStatus();
    [[nodiscard]] static QVariantMap readSinks();

    void parseStatus(const QVariantMap &status);
    // Each stores its field, and tells whether that has changed.
    bool setDeviceName(const QString &name);
    bool setHardwareAddress(const QString &address);
    bool setType(const QString &type);
    bool setConnectionState(const QString &state);
    bool setDisplayState(const QString &state);
    bool setSessionId(const QString &id);
    bool setDevicePixelSize(int width, int height);
    bool setStopReason(int code);
    bool setStatus(const QString &status);
    // Each announces its field; a slot may destroy this.
    void notifyDeviceName();
    void notifyHardwareAddress();
    void notifyType();
    void notifyConnectionState();
    void notifyDisplayState();
    void notifySessionId();
    void notifyDevicePixelSize();
    void notifyStopReason();
    void notifyStatus();

    void handleResult(const QVariantMap &status);
    void handleScanResult(const QVariantMap &status);
    void handleConnectResult(const QVariantMap &status);
    void handleDisconnectResult(const QVariantMap &status);
    void handlePauseResult(const QVariantMap &status);
    void handleResumeResult(const QVariantMap &status);
    void handleShutdownResult(const QVariantMap &status);

    MiracastManager *q;
    oz::PpsObject *m_status;
    QStringList m_pending; // the tokens of requests that were sent and are not answered yet
    State m_state;
    bool m_wasConnected = false; // before the last change of the connection state
    bool m_ready = false; // the status object is open
};

} // namespace oz::device
