#pragma once

#include "core/SimulatedPhone.hpp"
#include "sdcard/SdCardSource.hpp"

namespace oz::services {

/*! The phone's card slot: the section "sdcard" with "mounted" and "busy". */
class SimulatedSdCard : public SdCardSource, public SimulatedPart
{
public:
    explicit SimulatedSdCard(const JsonNode &section);

    [[nodiscard]] std::optional<State> state() const override { return m_state; }
    [[nodiscard]] QString name() const override { return QStringLiteral("sdcard"); }
    [[nodiscard]] std::vector<SimVerb> verbs(const QString &instance) override;

private:
    void become(bool mounted, bool busy);

    State m_state;
};

} // namespace oz::services
