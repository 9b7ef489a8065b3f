#pragma once

#include "core/SimulatedPhone.hpp"
#include "led/LedSource.hpp"

namespace oz::services {

/*! The phone's notification LED: the section "led". */
class SimulatedLed final : public LedSource, public SimulatedPart
{
public:
    explicit SimulatedLed(const JsonNode &section);

    [[nodiscard]] std::optional<Elements> lit() const override { return m_lit; }
    void light(const Elements &elements) override;
    [[nodiscard]] Flash flash() const override { return m_flash; }
    [[nodiscard]] std::optional<Mishap> takeMishap(const QString &message) override
    {
        return m_mishaps.take(message);
    }
    [[nodiscard]] QString name() const override { return QStringLiteral("led"); }
    [[nodiscard]] std::vector<SimVerb> verbs(const QString &) override { return m_mishaps.verbs(); }

private:
    Flash m_flash;
    Elements m_lit;
    Mishaps m_mishaps;
};

} // namespace oz::services
