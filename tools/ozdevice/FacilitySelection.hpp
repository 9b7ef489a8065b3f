#pragma once

#include "Arguments.hpp"
#include "facilities/FacilityTable.hpp"

#include <map>
#include <string>
#include <vector>

namespace oz::tools {

using arguments::Verb;

/*! The facilities that a command line names, and the selected instances. */
class FacilitySelection
{
public:
    /*! Adds the optional words FACILITY...; without them, all facilities are meant. */
    void addFacilities(const Verb &verb);
    /*! Adds the required word FACILITY. */
    void addFacility(const Verb &verb);
    /*! Adds the options that select a display, network or profile. */
    void addSelectors(const Verb &verb);

    /*! If the words are a facility and one of its properties, removes the property and returns it;
     * otherwise returns an empty text. */
    [[nodiscard]] QString takeProperty();

    [[nodiscard]] bool isNamed() const { return !m_names.empty(); }
    /*! Returns the facilities. Throws CommandError for an unknown name, and for a selector that none of
     * them has. */
    [[nodiscard]] std::vector<const FacilityEntry *> entries() const;
    [[nodiscard]] const FacilityEntry &entry() const { return *entries().front(); }
    /*! Returns the selected instance of \a entry; empty if none is selected. */
    [[nodiscard]] QString selected(const FacilityEntry &entry) const;
    /*! Returns the selected instance, or all that exist now; an empty text for a facility without
     * instances. */
    [[nodiscard]] QStringList instances(const FacilityEntry &entry) const;

private:
    std::vector<std::string> m_names;
    std::string m_name; // instead of m_names, for a verb that needs exactly one
    std::map<QString, std::string> m_selected;
};

/*! Returns the facilities whose objects can be read. If no daemon feeds the tree, prints so in one line. */
[[nodiscard]] std::vector<const FacilityEntry *> availableFacilities(
    const std::vector<const FacilityEntry *> &entries);

} // namespace oz::tools
