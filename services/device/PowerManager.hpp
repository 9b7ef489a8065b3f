#pragma once

#include "device/Activity.hpp"
#include "publishing/Publisher.hpp"

#include <oz/DeviceServer.hpp>

#include <map>

namespace oz::services {

/*!
 * Serves the device "/dev/power/mgr". A client writes "STATUS NAME" to follow a status, and is sent a line
 * "statusVALUE" at once and with each change; a further line of it changes which status that is. What is no
 * such line, or names no status, is answered with a line "error: ..." and changes nothing. While it is not
 * known whether the device is used, "user_activity" has the value "unknown".
 */
class PowerManager final : public PublisherOf<ActivitySource>
{
public:
    PowerManager(const QString &facility, ActivitySource &source, Tree &tree);
    ~PowerManager() override;

private:
    class Device;
    using Statuses = QMap<QString, QString>;

    void publishState(const Activity &state) override;
    void publishAbsence() override;
    void onReceived(const DeviceServer::Client &client, const QByteArray &line);
    using Publisher::follow;
    void follow(quint64 client, const QString &name);
    void become(const Statuses &statuses);

    Statuses m_statuses; // none before the source has told anything
    std::unique_ptr<Device> m_device;
    std::map<quint64, QString> m_followed; // which status by which client
};

} // namespace oz::services
