#pragma once

#include "display/DisplaySource.hpp"
#include "phone/SimulatedPhone.hpp"

namespace oz::services {

/*! The phone's displays: the section "display" with the list "displays". */
class SimulatedDisplays final : public DisplaySource, public SimulatedPart
{
public:
    SimulatedDisplays(const JsonNode &section, SimulatedPhone &phone);

    [[nodiscard]] std::vector<SimVerb> verbs(const QString &instance) override;
    [[nodiscard]] QVariantMap saved() const override;
    void restore(const QVariantMap &saved) override;

    /*! The display of \a id; null where there is none. */
    [[nodiscard]] const DisplayState::Display *find(int id) const;
    /*! Adds a display without wire, for a receiver called \a receiver, and gives its identifier. */
    int addWireless(const QString &receiver, QSize size);
    void remove(int id);
    /*! Takes away the display that addWireless() made for \a receiver; does nothing where there is none. */
    void removeWireless(const QString &receiver);

private:
    void readDisplay(const JsonNode &node);
    DisplayState::Display &displayNamed(const QString &id);
    void setAttached(const QString &id, bool attached);
    void tell();

    DisplayState m_state;
};

} // namespace oz::services
