#pragma once

#include "phone/SimulatedPart.hpp"

#include <QStringList>
#include <QVariantMap>

#include <functional>
#include <memory>
#include <vector>

namespace oz::services {

class StateStore;

/*!
 * The phone that there is not: one part a facility, set up from a commented JSON file and changed by verbs.
 * Its state outlives the daemon.
 */
class SimulatedPhone : public SimulatedParts
{
public:
    /*! Verbs that somebody else adds to those of a part's instance. */
    using FurtherVerbs = std::function<std::vector<SimVerb>(const QString &part, const QString &instance)>;

    /*!
     * Takes over the phone's file; throws Error, naming file, line and key, where it is wrong. It goes on
     * from what is in \a store where that is of the same file. The parts are made in the order of \a parts.
     */
    SimulatedPhone(const JsonNode &file, const std::vector<PartDescription> &parts, StateStore &store);
    ~SimulatedPhone();
    SimulatedPhone(const SimulatedPhone &) = delete;
    SimulatedPhone &operator=(const SimulatedPhone &) = delete;

    /*! Is called when something may have changed, and before anybody hears of that. */
    void onChange(std::function<void()> change) { m_change = std::move(change); }
    void setFurtherVerbs(FurtherVerbs verbs) { m_furtherVerbs = std::move(verbs); }

    /*!
     * Does what \a words, "[INSTANCE] VERB [ARGUMENT...]", tell the part \a name; throws Error, which says
     * what was expected, where that fails.
     */
    void run(const QString &name, QStringList words);

    /*!
     * Every part: "verbs", as maps with "name", "arguments", "help", "fault" where it is one, "repeats" where
     * another verb without arguments does the same, and "choices" of arguments ("words", or "least", "most",
     * "step" and "unit"; "titles", what they mean for people; "followed" and "alone", the words of a first
     * argument that want or refuse the optional one after it); "former-verbs", by the names that verbs had
     * before and are still told by, their present ones; "switches", lists of the verbs of which one is so at
     * a time; "instances" where there are any that have names; and "comes" and "goes", the verbs for its
     * neighbours, where it has any.
     */
    [[nodiscard]] QVariantMap describe() const;
    /*!
     * The state of every part: of each instance (one without a name is "") the present argument of each verb,
     * texts or true or false; and "neighbours", maps with "part", "name", "title" and "in-range".
     */
    [[nodiscard]] QVariantMap values() const;

private:
    void tellChange() const;
    [[nodiscard]] std::vector<SimVerb> verbsOf(
        const QString &name, SimulatedPart &part, const QString &instance) const;

    FurtherVerbs m_furtherVerbs;
    std::function<void()> m_change;
};

} // namespace oz::services
