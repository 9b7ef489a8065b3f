#pragma once

#include "phone/PhoneClock.hpp"
#include "phone/PhoneFile.hpp"
#include "phone/SimVerb.hpp"

#include <QStringList>
#include <QVariantMap>

#include <functional>
#include <memory>
#include <vector>

namespace oz::services {

class SimulatedPhone;
class StateStore;

/*! One part of the simulated phone, which feeds a facility. */
class SimulatedPart
{
public:
    virtual ~SimulatedPart() = default;
    /*! The names of its instances, one of which stands before each verb; an only one needs no name. */
    [[nodiscard]] virtual QStringList instances() const { return {QString()}; }
    /*! What \a instance can be told; all instances can be told the same. */
    [[nodiscard]] virtual std::vector<SimVerb> verbs(const QString &instance) = 0;

    /*! Something around the phone, in range or not. */
    struct Neighbour
    {
        QString name; //!< as verbs call it
        QString title; //!< for people
        bool inRange;
    };
    struct Neighbourhood
    {
        QString comes; //!< the verb that brings one of them into range
        QString goes; //!< and that takes it out
        QList<Neighbour> neighbours;
    };
    [[nodiscard]] virtual Neighbourhood neighbourhood() const { return {}; }

    /*! What it has to know again after the daemon died, beside what the phone's file says. */
    [[nodiscard]] virtual QVariantMap saved() const = 0;
    /*! Goes on from what it saved, also when it did so before. It passes over what makes no sense, so that
     * saved() shows that it was not taken. */
    virtual void restore(const QVariantMap &saved) = 0;

    /*! Is called with each change of saved(). */
    void onSave(std::function<void()> save) { m_save = std::move(save); }

protected:
    /*! To be called where saved() may have changed, and before anybody hears of that. */
    void save() const
    {
        if (m_save)
            m_save();
    }

private:
    std::function<void()> m_save;
};

/*! How a part of the phone is made: from the section \a name of the phone's file. */
struct PartDescription
{
    QString name;
    std::function<std::shared_ptr<SimulatedPart>(const JsonNode &section, SimulatedPhone &phone)> make;
};

/*!
 * The phone that there is not: one part a facility, set up from a commented JSON file and changed by verbs.
 * Its state outlives the daemon.
 */
class SimulatedPhone
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

    [[nodiscard]] PhoneClock &clock() { return m_clock; }
    /*! Is called when something may have changed, and before anybody hears of that. */
    void onChange(std::function<void()> change) { m_change = std::move(change); }
    void setFurtherVerbs(FurtherVerbs verbs) { m_furtherVerbs = std::move(verbs); }

    /*! The part that is a \a PartType, of those that are made already. */
    template <typename PartType>
    [[nodiscard]] std::shared_ptr<PartType> part() const
    {
        for (const auto &[name, candidate] : m_parts) {
            if (auto found = std::dynamic_pointer_cast<PartType>(candidate))
                return found;
        }
        Q_UNREACHABLE();
    }

    /*!
     * Does what \a words, "[INSTANCE] VERB [ARGUMENT...]", tell the part \a name; throws Error, which says
     * what was expected, where that fails.
     */
    void run(const QString &name, QStringList words);

    /*!
     * Every part: "verbs", as maps with "name", "arguments", "help", "fault" where it is one, and "choices"
     * of arguments ("words", or "least", "most", "step" and "unit"); "instances" where there are any that
     * have names; and "comes" and "goes", the verbs for its neighbours, where it has any.
     */
    [[nodiscard]] QVariantMap describe() const;
    /*!
     * What every part is like: of each instance (one without a name is "") what each verb would be told now,
     * texts or true or false; and "neighbours", maps with "part", "name", "title" and "in-range".
     */
    [[nodiscard]] QVariantMap values() const;

private:
    void tellChange() const;
    [[nodiscard]] std::vector<SimVerb> verbsOf(
        const QString &name, SimulatedPart &part, const QString &instance) const;

    PhoneClock m_clock;
    std::vector<std::pair<QString, std::shared_ptr<SimulatedPart>>> m_parts;
    FurtherVerbs m_furtherVerbs;
    std::function<void()> m_change;
};

} // namespace oz::services
