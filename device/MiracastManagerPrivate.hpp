#pragma once

#include "ChangeTable.hpp"
#include "MiracastRequests.hpp"

#include <oz/device/MiracastManager.hpp>

#include <QVariantMap>

namespace oz {
class PpsObject;
}

namespace oz::device {

class MiracastManagerPrivate : public QObject
{
    Q_OBJECT

public:
    /*! The last report of the service. */
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
        bool wasConnected = false; //!< before the last change of the connection state
    };

    explicit MiracastManagerPrivate(MiracastManager *q);

    [[nodiscard]] static bool isSupported();
    [[nodiscard]] const State &state() const { return *m_state; }

    void requestScan() { m_requests.send(MiracastRequestKind::Scan); }
    void requestConnect(const QString &hardwareAddress, const QString &pin);
    void requestPause() { m_requests.send(MiracastRequestKind::Pause); }
    void requestResume() { m_requests.send(MiracastRequestKind::Resume); }
    void requestDisconnect() { m_requests.send(MiracastRequestKind::Disconnect); }
    void requestShutdown() { m_requests.send(MiracastRequestKind::Shutdown); }
    void warmup();

private Q_SLOTS:
    void onStatusReadyRead();

private:
    /*! The state that \a status, of which every attribute may be missing, makes of the present one. */
    [[nodiscard]] State parseStatus(const QVariantMap &status) const;
    [[nodiscard]] static QVariantMap readSinks();
    void announceSinks();

    MiracastManager *q;
    oz::PpsObject *m_status;
    MiracastRequests m_requests;
    Announced<State> m_state;
};

} // namespace oz::device
