#pragma once

#include "linux/BusService.hpp"

namespace oz::services {

/*! The name of this device for people: that of hostnamed, else the host's. */
class FriendlyName : public QObject
{
    Q_OBJECT

public:
    explicit FriendlyName(std::shared_ptr<SystemBus> bus);
    [[nodiscard]] const QString &text() const { return m_text; }

private:
    void read();

    std::shared_ptr<SystemBus> m_bus;
    QString m_text;
};

} // namespace oz::services
