#pragma once

#include "ozdevice/FacilityInstance.hpp"

#include <QElapsedTimer>
#include <QList>

#include <memory>
#include <vector>

namespace oz::tools {

/*! Prints the counters of a facility whose values are read on demand: what came in each second, and all. */
class CounterTable
{
public:
    /*! Of the instances \a selected. Reads for the first time; throws CommandError where that fails. */
    CounterTable(const FacilityEntry &entry, const QStringList &selected, bool asJson);

    /*! Reads again, and prints a line for each instance about the time since. */
    void printNext();

private:
    struct Row
    {
        std::unique_ptr<FacilityInstance> instance;
        QList<quint64> counters;
    };
    [[nodiscard]] QList<quint64> read(const FacilityInstance &instance) const;
    void printHead() const;
    void print(const FacilityInstance &instance, const QList<quint64> &perSecond,
        const QList<quint64> &totals) const;

    const FacilityEntry &m_entry;
    bool m_json;
    QStringList m_names;
    std::vector<Row> m_rows;
    int m_nameWidth = 0;
    QElapsedTimer m_since;
};

} // namespace oz::tools
