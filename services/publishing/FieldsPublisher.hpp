#pragma once

#include "publishing/Publisher.hpp"
#include "table/Fields.hpp"

#include <deque>

namespace oz::services {

/*! Publishes a facility by its tables of fields. */
template <typename SourceType>
class FieldsPublisher : public PublisherOf<SourceType>
{
public:
    using State = typename SourceType::State;
    using Tables = std::vector<const Fields<State> *>;

    FieldsPublisher(const QString &facility, SourceType &source, Tree &tree, const Tables &tables)
        : FieldsPublisher(facility, source, tree, tables, Unfollowed())
    {
        this->follow();
    }

protected:
    /*! For a heir that has more to make first, and then calls follow(). */
    struct Unfollowed
    {
    };
    FieldsPublisher(const QString &facility, SourceType &source, Tree &tree, const Tables &tables, Unfollowed)
        : PublisherOf<SourceType>(facility, source, tree), m_tables(tables)
    {
        for (const Fields<State> *fields : tables)
            this->declare(m_objects.emplace_back(tree, fields->path(), fields->mode()));
    }

    void publishState(const State &state) override
    {
        for (std::size_t i = 0; i < m_tables.size(); ++i)
            m_objects[i].publish(m_tables[i]->attributes(state));
    }

private:
    Tables m_tables;
    std::deque<StatePublisher> m_objects; // one for each table
};

} // namespace oz::services
