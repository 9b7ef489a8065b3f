#pragma once

#include "Arguments.hpp"
#include "facilities/FacilityTable.hpp"

#include <map>
#include <string>
#include <vector>

namespace oz::tools {

using arguments::Verb;

/*! The facilities that the words of a call name, and which of their several. */
class FacilitySelection
{
public:
    /*! Adds the word FACILITY..., all where none is given. */
    void addFacilities(const Verb &verb);
    /*! Adds the word FACILITY, which must be given. */
    void addFacility(const Verb &verb);
    /*! Adds the options that tell which display, network or profile is meant. */
    void addSelectors(const Verb &verb);

    /*! The second of two words that are a facility and one of its properties, which is taken away; empty
     * where they are something else. */
    [[nodiscard]] QString takeProperty();

    [[nodiscard]] bool isNamed() const { return !m_names.empty(); }
    /*! The facilities; throws CommandError for a name that is none, and for a selector that none of them
     * takes. */
    [[nodiscard]] std::vector<const FacilityEntry *> entries() const;
    /*! The only facility. */
    [[nodiscard]] const FacilityEntry &entry() const { return *entries().front(); }
    /*! What is selected of a facility's several; empty for nothing. */
    [[nodiscard]] QString selected(const FacilityEntry &entry) const;
    /*! What is selected of it, else all that there are now, and an empty text for one that is alone. */
    [[nodiscard]] QStringList instances(const FacilityEntry &entry) const;

private:
    std::vector<std::string> m_names;
    std::string m_name; // where it must be one
    std::map<QString, std::string> m_selected;
};

/*! Where no daemon feeds the tree, says so on standard error, in one line; which of \a entries can be looked
 * at for all that, as their objects are there. */
[[nodiscard]] std::vector<const FacilityEntry *> withoutUnfed(
    const std::vector<const FacilityEntry *> &entries);

} // namespace oz::tools
