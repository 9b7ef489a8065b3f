#pragma once

#include "publishing/ControlObject.hpp"
#include "publishing/StatePublisher.hpp"
#include "source/Source.hpp"

#include <QStringList>
#include <QTimer>

#include <map>
#include <vector>

namespace oz::services {

/*!
 * Publishes a facility: the only code that knows its objects, their attributes and its requests. It follows
 * the facility's source. A source that is absent for less than the grace time is not seen: what was published
 * stays. One that stays away has its objects emptied, so that applications know of nothing.
 */
class Publisher : public QObject
{
    Q_OBJECT

public:
    /*! The faults that requests can be told to have: by instance, under an empty name where there is only
     * one. */
    using FaultsByInstance = std::map<QString, Faults *>;
    [[nodiscard]] virtual FaultsByInstance faults() { return {}; }

    /*! True once the state of its source is published, or that the source knows none. */
    [[nodiscard]] bool hasSettled() const { return m_hasSettled; }

Q_SIGNALS:
    void settled();

protected:
    /*! A publisher of \a facility, by its name, from \a source. */
    Publisher(const QString &facility, Source &source, Tree &tree);

    /*! To be called once everything that publish() uses is made. */
    void follow();
    /*! Publishes what the source knows. */
    virtual void publish() = 0;
    /*! Publishes that the source knows nothing any more: unless overridden, empties what declare() named. */
    virtual void publishAbsence();
    /*! Names a state object that is about the source alone. */
    void declare(StatePublisher &object) { m_states.push_back(&object); }
    /*! Publishes again because of something else than the source. */
    void republish();

    [[nodiscard]] Tree &tree() const { return m_tree; }
    [[nodiscard]] const QString &facility() const { return m_facility; }

private:
    void onChanged();
    void giveUp();
    void settle();

    QString m_facility;
    Source &m_source;
    Tree &m_tree;
    std::vector<StatePublisher *> m_states;
    QTimer m_grace;
    bool m_isEmptied = false;
    bool m_hasSettled = false;
};

/*! A publisher over a source of the type \a SourceType. */
template <typename SourceType>
class PublisherOf : public Publisher
{
public:
    using Followed = SourceType;

protected:
    PublisherOf(const QString &facility, SourceType &source, Tree &tree)
        : Publisher(facility, source, tree), m_source(source)
    {
    }

    /*! Publishes \a state, which the source knows. */
    virtual void publishState(const typename SourceType::State &state) = 0;
    [[nodiscard]] SourceType &source() const { return m_source; }

private:
    void publish() final
    {
        if (const auto &state = m_source.state())
            publishState(*state);
    }

    SourceType &m_source;
};

} // namespace oz::services
