#pragma once

#include "activity/ActivitySource.hpp"
#include "core/SimulatedPhone.hpp"

#include <QTimer>

namespace oz::services {

/*! Whether somebody uses the phone: the section "activity". Nobody does after a while without being told
 * otherwise. */
class SimulatedActivity final : public ActivitySource, public SimulatedPart
{
public:
    explicit SimulatedActivity(const JsonNode &section);

    [[nodiscard]] std::optional<Statuses> statuses() const override { return m_statuses; }
    [[nodiscard]] QString name() const override { return QStringLiteral("activity"); }
    [[nodiscard]] std::vector<SimVerb> verbs(const QString &instance) override;

private:
    void become(const QString &state);

    Statuses m_statuses;
    QTimer m_idle;
};

} // namespace oz::services
