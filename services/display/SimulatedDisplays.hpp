#pragma once

#include "display/Displays.hpp"
#include "phone/SimulatedPart.hpp"

namespace oz::services {

/*! The phone's displays: the section "display" with the list "displays". */
class SimulatedDisplays final : public DisplaySource, public SimulatedPart
{
public:
    SimulatedDisplays(const JsonNode &section, SimulatedParts &phone);

    [[nodiscard]] static InstanceSettings instanceSettings()
    {
        return {QStringLiteral("displays"), displayTable().of(nullptr)};
    }
    [[nodiscard]] std::vector<SimVerb> verbs(const QString &instance) override;
    [[nodiscard]] QVariantMap saved() override;
    void restore(const QVariantMap &saved) override;

    /*! The key in its section under which all displays are. */
    inline static const QString List = QStringLiteral("displays");
    /*! \a displays as they stand there. */
    [[nodiscard]] static QVariantList listOf(const DisplayTree::Displays &displays);

    /*! The display of \a id; null where there is none. */
    [[nodiscard]] const Display *find(int id) const;
    /*! Adds a display without wire, called \a name, and gives its identifier. */
    int addWireless(const QString &name, QSize size);
    void remove(int id);
    /*! Takes away the display that addWireless() made; does nothing where there is none. */
    void removeWireless(const QString &name);

private:
    [[nodiscard]] static const Settings<Display> &displayTable();
    void readDisplay(const JsonNode &node);
    Display &displayNamed(const QString &id);
    [[nodiscard]] SimChoice knownDisplays() const;
    void add(const QStringList &words);
    void setAttached(const QString &id, bool attached);
    void update() override;

    DisplayState m_state;
};

} // namespace oz::services
