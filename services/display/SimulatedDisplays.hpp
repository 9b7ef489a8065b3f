#pragma once

#include "core/SimulatedPhone.hpp"
#include "display/DisplaySource.hpp"

namespace oz::services {

/*! The phone's displays: the section "display" with the list "displays". */
class SimulatedDisplays final : public DisplaySource, public SimulatedPart
{
public:
    explicit SimulatedDisplays(const JsonNode &section);

    [[nodiscard]] std::optional<DisplayTree::Displays> displays() const override { return m_displays; }
    [[nodiscard]] QString name() const override { return QStringLiteral("display"); }
    [[nodiscard]] std::vector<SimVerb> verbs(const QString &instance) override;

    /*! Adds a display without wire, for a receiver called \a receiver, and gives its identifier. */
    int addWireless(const QString &receiver, QSize size);
    void remove(int id);

private:
    void readDisplay(const JsonNode &node);
    DisplayTree::Display &displayNamed(const QString &id);
    void setAttached(const QString &id, bool attached);

    DisplayTree::Displays m_displays;
};

} // namespace oz::services
