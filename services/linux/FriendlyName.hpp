#pragma once

#include "linux/BusService.hpp"

namespace oz::services {

/*! How hostnamed describes this device. */
struct HostDescription
{
    QString prettyName; //!< empty if it has none, or hostnamed does not answer
    QString chassis; //!< in hostnamed's words, such as "laptop"; empty for unknown

    /*! The name of this device for people: the pretty one, else the host's. */
    [[nodiscard]] QString name() const;
};

/*! Asks hostnamed, and calls \a done once with what it tells, as long as \a context lives. */
void describeHost(const QDBusConnection &connection, QObject *context,
    const std::function<void(const HostDescription &host)> &done);

/*! The name of this device for people, which is known at once: it is the host's until hostnamed tells one. */
class FriendlyName : public QObject
{
    Q_OBJECT

public:
    explicit FriendlyName(std::shared_ptr<SystemBus> bus);
    [[nodiscard]] QString text() const { return m_host.name(); }

private:
    void read();

    std::shared_ptr<SystemBus> m_bus;
    HostDescription m_host;
};

} // namespace oz::services
