#pragma once

#include "daemon/Configuration.hpp"
#include "daemon/Observation.hpp"
#include "daemon/ScenarioService.hpp"
#include "publishing/ControlObject.hpp"
#include "publishing/StatePublisher.hpp"
#include "publishing/StateStore.hpp"

#include <QObject>
#include <QTimer>

#include <memory>
#include <optional>

namespace oz::services {

class RunningFacilities;

/*!
 * All services of one device root. It serves, for tools:
 * - "/pps/system/ozdeviced/control": the requests "sim" ("dat": "facility" and, as "verb" and "arguments",
 * the words that follow it in `ozdevice sim`; with "publish", the object "phone" has what became of it before
 * the answer comes), "describe", and those of ScenarioService and Observation, for the daemon's own user
 * only. It is served last, so where it can be opened, everything is published.
 * - "/pps/system/ozdeviced/phone", for the daemon's own user only: SimulatedPhone::values(), and a
 * "description", which is another one when "describe" has another answer.
 * - "/pps/system/ozdeviced/status": "pid", "sources", and "facilities": of each its "title" for people, its
 * "source", its "state" ("known", "absent", "pending" or "none"), and its "reason" where nothing is known.
 */
class Daemon : public QObject
{
    Q_OBJECT

public:
    enum class Start {
        Continue, //!< go on where a daemon that died was
        Fresh, //!< begin anew
    };

    /*!
     * Claims the device root and starts every facility; throws Error. The simulated phone, where one is
     * wanted, is made from \a phone, or else from the configuration's file.
     */
    explicit Daemon(const Configuration &configuration, const std::optional<JsonNode> &phone = {},
        Start start = Start::Continue);
    ~Daemon() override;

    /*! True once everything is published. */
    [[nodiscard]] bool isReady() const { return m_isReady; }

    /*! The player of scenarios on the simulated phone. */
    [[nodiscard]] ScenarioService &scenarios() { return m_scenarios; }

    /*! Takes over another configuration, and the phone's file anew. Where that is wrong it throws Error, and
     * everything goes on as it was. */
    void reload(const Configuration &configuration);

Q_SIGNALS:
    void ready();

private:
    class RootLock;

    void run(const Configuration &configuration, std::unique_ptr<RunningFacilities> facilities);
    void checkReady();
    void publishStatus();
    void removeLeftovers();
    [[nodiscard]] RequestTable requests();
    void watchPhone();
    void publishPhone();
    void publishPhoneLater();
    [[nodiscard]] QVariantMap description() const;
    [[nodiscard]] Reply describe(const Request &request);
    [[nodiscard]] Reply sim(const Request &request);

    std::unique_ptr<RootLock> m_lock;
    StateStore m_store;
    Tree m_tree;
    StatePublisher m_status;
    StatePublisher m_phone;
    QTimer m_phoneChanges; // what changes at the same time is published together
    std::unique_ptr<RunningFacilities> m_running;
    ScenarioService m_scenarios;
    Observation m_observation{m_tree};
    ControlObject m_control;
    bool m_isReady = false;
};

} // namespace oz::services
