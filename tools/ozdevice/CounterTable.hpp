#pragma once

#include "ozdevice/FacilityInstance.hpp"

#include <QElapsedTimer>
#include <QList>

#include <memory>
#include <vector>

namespace oz::tools {

/*! Prints the counters of a facility that are read on demand, as rates and totals. */
class CounterTable
{
public:
    /*! Reads the counters of the instances \a selected for the first time. Throws CommandError on failure.
     * */
    CounterTable(const FacilityEntry &entry, const QStringList &selected, bool asJson);

    /*! Reads again, and prints a line per instance about the time since the last reading. */
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
