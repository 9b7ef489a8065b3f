#pragma once

#include "core/ControlObject.hpp"
#include "core/SimulatedPhone.hpp"
#include "core/SourceConfig.hpp"

#include <QObject>

#include <memory>
#include <vector>

namespace oz::services {

/*!
 * All services of one device root. It serves, for tools:
 * - "/pps/system/ozdeviced/control": the requests "sim" ("dat": "facility" and, as "verb" and "arguments",
 * the words that follow it in `ozdevice sim`) and "describe", for the daemon's own user only. It is served
 * last, so where it can be opened, everything is published.
 * - "/pps/system/ozdeviced/status": "pid" and "sources", while the daemon runs.
 */
class Daemon : public QObject
{
    Q_OBJECT

public:
    /*! Claims the device root and starts every facility; throws Error. */
    Daemon(const SourceConfig &config, const JsonNode &phoneFile);
    ~Daemon() override;

private:
    std::optional<Reply> onRequest(const Request &request);

    class RootLock;
    std::unique_ptr<RootLock> m_lock;
    SimulatedPhone m_phone;
    QVariantMap m_sources;
    std::vector<std::unique_ptr<QObject>> m_facilities;
    ControlObject m_control;
};

} // namespace oz::services
