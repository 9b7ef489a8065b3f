#pragma once

#include "miracast/SinkWay.hpp"
#include "wifi-direct/WpaWiFiDirect.hpp"

#include <memory>

namespace oz::services {

/*!
 * Wireless displays that are reached by Wi-Fi Direct. Each session has a group with the sink, which ends with
 * it unless somebody else uses the group, too.
 */
class AirSinks final : public SinkWay
{
    Q_OBJECT

public:
    /*! Sinks connect to \a port of this device. */
    AirSinks(std::shared_ptr<WpaWiFiDirect> radio, int port);

    void scan(const Scanned &scanned) override;
    void cancelScan() override { m_scanned = nullptr; }
    [[nodiscard]] const QList<Sink> &sinks() const override { return m_sinks; }
    void reach(const QString &address, const QString &pin, const Reached &reached) override;
    void leave() override;
    [[nodiscard]] QString remark() const override;
    [[nodiscard]] QVariantList saved() const override;
    void restore(const QVariantList &saved) override;

private:
    void onRadio();
    void connectSink(const QString &pin);
    void onGroup(const WiFiDirectState &state);
    void fail(Result result);
    [[nodiscard]] bool isOn() const;
    [[nodiscard]] Result failureOfRadio() const;

    std::shared_ptr<WpaWiFiDirect> m_radio;
    Scanned m_scanned; // empty while it does not scan
    bool m_isScanning = false; // the radio, for it
    QList<Sink> m_sinks;
    QString m_sink; // the address of the one that is reached, or being reached; empty for none
    Reached m_reached; // empty while none is being reached
    bool m_isAsked = false; // the radio, for the sink
    QString m_session; // that keeps the group
    QString m_leftOver; // the session of a daemon that died
    bool m_hasPin = false;
    QString m_lastRemark;
};

} // namespace oz::services
