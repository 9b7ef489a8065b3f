#pragma once

#include "ozdevice/FacilityTable.hpp"

#include <QElapsedTimer>
#include <QList>

namespace oz::tools {

/*! Prints the counters of a facility whose values are read on demand: what came in each second, and all. */
class CounterTable
{
public:
    /*! \a selected tells which one \a object is. Reads for the first time. */
    CounterTable(const FacilityEntry &entry, QObject *object, const QString &selected, bool asJson);

    /*! Reads again, and prints one line about the time since. */
    void printNext();

private:
    [[nodiscard]] QList<quint64> read() const;
    void printHead() const;

    const FacilityEntry &m_entry;
    QObject *m_object;
    QString m_selected;
    bool m_json;
    QStringList m_names;
    QList<quint64> m_before;
    QElapsedTimer m_since;
};

} // namespace oz::tools
