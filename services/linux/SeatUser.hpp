#pragma once

#include "linux/BusObjects.hpp"

#include <optional>
#include <sys/types.h>

namespace oz::services {

/*! The user of the active session of the seat "seat0", as logind tells. */
class SeatUser : public QObject
{
    Q_OBJECT

public:
    explicit SeatUser(std::shared_ptr<SystemBus> bus);

    /*! Nothing while no session is active, or logind has not told. */
    [[nodiscard]] std::optional<uid_t> user() const { return m_user; }
    /*! Why logind tells nothing, in words for a person; empty where it does. */
    [[nodiscard]] const QString &absence() const { return m_logind.absence(); }

Q_SIGNALS:
    /*! user() or absence() is another. */
    void changed();

private:
    void read();

    BusService m_logind;
    BusObjects m_objects;
    QString m_session; // the object of the active session; empty for none
    std::optional<uid_t> m_user;
};

} // namespace oz::services
