#pragma once

#include "phone/JsonNode.hpp"
#include "phone/PhoneClock.hpp"
#include "phone/SimVerb.hpp"
#include "table/Settings.hpp"

#include <QStringList>
#include <QVariantMap>

#include <functional>
#include <memory>
#include <utility>
#include <vector>

namespace oz::services {

/*! The settings of each instance of a part, under \a key of the part's section of the phone's file. */
struct InstanceSettings
{
    QString key;
    std::vector<Setting> settings;
};

/*!
 * One part of the simulated phone, which feeds a facility. What it can be told is a table of settings; its
 * verbs, its section of the phone's file and what is saved of it follow from that.
 */
class SimulatedPart
{
public:
    virtual ~SimulatedPart() = default;
    /*! The names of its instances, one of which stands before each verb; an only one needs no name. */
    [[nodiscard]] virtual QStringList instances() const { return {QString()}; }
    /*! The key in its section of the phone's file under which its instances are, where they have names. */
    [[nodiscard]] virtual QString instancesKey() const { return {}; }
    /*! The settings of \a instance, or, under an empty name, of the whole; all instances have the same.
     */
    [[nodiscard]] virtual std::vector<Setting> settings(const QString &instance);
    /*! The verbs of its settings, in their order. */
    [[nodiscard]] virtual std::vector<SimVerb> verbs(const QString &instance);

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

    /*! The state that a restarted daemon needs beside the phone's file: the settings that
     * can change, those of instances under their names in a map under instancesKey(). */
    [[nodiscard]] virtual QVariantMap saved();
    /*! Goes on from what it saved. It passes over what does not fit, which saved() then lacks. */
    virtual void restore(const QVariantMap &saved);

    /*! Is called with each change of saved(). */
    void onSave(std::function<void()> save) { m_save = std::move(save); }

    /*! Sets what \a section says, and the rest to its initial values; throws Error, naming file, line and
     * key, where it says something else than \a settings and the further \a keys. */
    static void read(
        const JsonNode &section, const std::vector<Setting> &settings, const QStringList &keys = {});
    /*! The values of those \a settings that are kept. */
    [[nodiscard]] static QVariantMap savedOf(const std::vector<Setting> &settings);
    /*! Sets what is kept as it was \a saved; false where some of it makes no sense, and was passed over. */
    static bool restoreTo(const std::vector<Setting> &settings, const QVariantMap &saved);

protected:
    /*! Works out what follows from what was set, and tells it. */
    virtual void update() { }
    /*! To be called where saved() may have changed, and before anybody hears of that. */
    void save() const
    {
        if (m_save)
            m_save();
    }

private:
    std::function<void()> m_save;
};

/*! A part of one instance, whose class \a Owner has its settings in a static table(). */
template <typename Owner>
class PartOfTable : public SimulatedPart
{
public:
    [[nodiscard]] std::vector<Setting> settings(const QString &) override
    {
        return Owner::table().of(static_cast<Owner *>(this));
    }
};

/*! The phone as its parts see it while they are made. */
class SimulatedParts
{
public:
    [[nodiscard]] PhoneClock &clock() { return m_clock; }

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

protected:
    using Parts = std::vector<std::pair<QString, std::shared_ptr<SimulatedPart>>>;

    void add(const QString &name, std::shared_ptr<SimulatedPart> part)
    {
        m_parts.emplace_back(name, std::move(part));
    }
    [[nodiscard]] const Parts &all() const { return m_parts; }

private:
    PhoneClock m_clock;
    Parts m_parts;
};

/*! How a part of the phone is made: from the section \a name of the phone's file. */
struct PartDescription
{
    QString name;
    std::function<std::shared_ptr<SimulatedPart>(const JsonNode &section, SimulatedParts &phone)> make;
};

} // namespace oz::services
