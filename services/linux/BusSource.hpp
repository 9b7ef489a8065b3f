#pragma once

#include "linux/BusObjects.hpp"
#include "source/Source.hpp"

#include <oz/Limits.hpp>

#include <QTimer>

#include <memory>
#include <optional>
#include <utility>

namespace oz::services {

/*!
 * A source, of the type \a SourceType, that a service of the system bus feeds. It is absent while the service
 * is away or does not answer.
 */
template <typename SourceType>
class BusSource : public SourceType
{
protected:
    using State = typename SourceType::State;

    /*! The \a service that feeds it, whose object manager, where it has one, is at \a manager. */
    explicit BusSource(std::shared_ptr<BusService> service, const QString &manager = {})
        : m_service(std::move(service)), m_objects(*m_service, manager)
    {
        const auto setServiceAbsent = [this] { this->setAbsent(m_service->absence()); };
        QObject::connect(m_service.get(), &BusService::vanished, this, setServiceAbsent);
        m_settling.setSingleShot(true);
        m_settling.setInterval(graceTime());
        m_settling.callOnTimeout(this, [this] {
            if (m_objects.isComplete())
                readState();
        });
        QObject::connect(m_service.get(), &BusService::appeared, &m_settling, qOverload<>(&QTimer::start));
        QObject::connect(&m_objects, &BusObjects::failed, this,
            [this](const QString &reason) { this->setAbsent(reason); });
        QObject::connect(&m_objects, &BusObjects::changed, this, [this] { this->readState(); });
    }

    /*! Called whenever all that is followed has been told, or has changed: for know() or setAbsent(). */
    virtual void readState() = 0;

    /*!
     * True if a service that has just started may tell \a now because it has not found everything yet.
     * \a before is what it told last, before it ended too.
     */
    [[nodiscard]] virtual bool isIncomplete(
        [[maybe_unused]] const State &now, [[maybe_unused]] const std::optional<State> &before) const
    {
        return false;
    }
    /*!
     * True if \a state is to be ignored: the service has appeared less than the grace time ago, and has
     * told nothing complete since. readState() is called when that time is over.
     */
    [[nodiscard]] bool isPremature(const State &state) const
    {
        return m_settling.isActive() && isIncomplete(state, m_last);
    }
    /*! Takes over the state, unless it is premature; false where it is. */
    bool know(const State &state)
    {
        if (isPremature(state))
            return false;
        m_settling.stop();
        m_last = state;
        SourceType::know(state);
        return true;
    }

    [[nodiscard]] BusService &service() { return *m_service; }
    [[nodiscard]] BusObjects &objects() { return m_objects; }
    [[nodiscard]] const BusObjects &objects() const { return m_objects; }

private:
    std::shared_ptr<BusService> m_service;
    BusObjects m_objects;
    QTimer m_settling;
    std::optional<State> m_last; // that it told
};

} // namespace oz::services
