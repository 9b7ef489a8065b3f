#pragma once

#include "linux/ChildProcess.hpp"
#include "linux/RetryTimer.hpp"
#include "linux/SeatUser.hpp"

#include <oz/ServiceClient.hpp>

namespace oz::services {

/*! Where the ozcast comes from that the daemon speaks with. */
class CastOrigin : public QObject
{
    Q_OBJECT

public:
    /*! To be called once ozcast can connect. */
    virtual void start() = 0;
    /*! True if this client is that ozcast. */
    [[nodiscard]] virtual bool admits(const ServiceClient &client) const = 0;
    /*! Why none is connected, in words for a person. */
    [[nodiscard]] virtual QString absence() const = 0;
    /*! True while one that is not connected is expected soon. */
    [[nodiscard]] virtual bool isExpected() const = 0;
    /*! It is given something to do, whose failure is no sign of a program that cannot run at all. */
    virtual void use() { }
    /*! Ends a process that does not do what it is told, where that is the daemon's. */
    virtual void kill() { }

Q_SIGNALS:
    /*! Any of that is another. */
    void changed();
};

/*! An ozcast that the daemon starts, and starts again when it ends: at once where it was in use, else with
 * growing pauses. */
class CastChild final : public CastOrigin
{
    Q_OBJECT

public:
    /*! By its \a program: a path, or nothing where there is none. */
    explicit CastChild(const QString &program);

    /*! The ozcast beside the daemon, or else in PATH; empty where there is none. */
    [[nodiscard]] static QString installedProgram();
    /*! What to tell people where there is none. */
    [[nodiscard]] static QString notInstalled();

    void start() override;
    [[nodiscard]] bool admits(const ServiceClient &client) const override;
    [[nodiscard]] QString absence() const override { return m_absence; }
    [[nodiscard]] bool isExpected() const override { return m_child.pid() != 0; }
    void use() override { m_isUsed = true; }
    void kill() override { m_child.kill(); }

private:
    void onEnded(const QString &how);

    QString m_program;
    QString m_absence;
    ChildProcess m_child;
    RetryTimer m_again;
    bool m_isUsed = false;
};

/*! The ozcast of the session that is active on the seat, which the session itself starts. */
class CastOfSeat final : public CastOrigin
{
    Q_OBJECT

public:
    explicit CastOfSeat(std::shared_ptr<SystemBus> bus);

    void start() override { }
    [[nodiscard]] bool admits(const ServiceClient &client) const override;
    [[nodiscard]] QString absence() const override;
    [[nodiscard]] bool isExpected() const override { return false; }

private:
    SeatUser m_seat;
};

} // namespace oz::services
