#pragma once

#include "activity/ActivitySource.hpp"

#include <oz/DeviceServer.hpp>

#include <map>

namespace oz::services {

/*!
 * Serves the device "/dev/power/mgr". A client writes "STATUS NAME" to follow a status, and is sent a line
 * "statusVALUE" at once and with each change; a further line of it changes which status that is. What is no
 * such line, or names no status, is answered with a line "error: ..." and changes nothing.
 */
class PowerManager : public QObject
{
public:
    explicit PowerManager(ActivitySource &source);

private:
    void onReceived(const DeviceServer::Client &client, const QByteArray &line);
    void onChanged();

    ActivitySource &m_source;
    ActivitySource::Statuses m_statuses;
    DeviceServer m_device;
    std::map<quint64, QString> m_followed; // which status by which client
};

} // namespace oz::services
