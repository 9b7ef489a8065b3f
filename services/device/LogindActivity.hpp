#pragma once

#include "device/Activity.hpp"
#include "linux/BusSource.hpp"

namespace oz::services {

/*! Tells whether somebody uses the device, as logind tells of the sessions on a \a seat, "seat0" unless it is
 * named. */
class LogindActivity final : public BusSource<ActivitySource>
{
public:
    explicit LogindActivity(std::shared_ptr<SystemBus> bus, const QString &seat = {});

private:
    void readState() override;
    [[nodiscard]] bool isIncomplete(
        const Activity &now, const std::optional<Activity> &before) const override;

    QString m_seat;
    QString m_path;
};

} // namespace oz::services
