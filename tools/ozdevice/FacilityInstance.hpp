#pragma once

#include "facilities/FacilityTable.hpp"

#include <QObject>

#include <memory>
#include <vector>

namespace oz::tools {

/*! An object of the tree that cannot be used. */
struct Problem
{
    QString path;
    int error; //!< an errno

    /*! The path and what is wrong; where it is a matter of permission, whose object it is. */
    [[nodiscard]] QString text() const;
};

/*! Tries to open the object at the device path \a path; 0 or an errno. */
[[nodiscard]] int tryToOpen(const QString &path);

/*! Those of \a paths that cannot be opened. */
[[nodiscard]] std::vector<Problem> problemsOf(const QStringList &paths);

/*! One object of a facility's class, which lives as long as the command looks at it. */
class FacilityInstance
{
public:
    enum Presence {
        MustBeThere,
        MayComeLater,
        MayBeNone, //!< also where the facility stands for nothing unless one is selected
    };

    /*! Throws CommandError where \a selected is not as \a presence wants it. */
    FacilityInstance(const FacilityEntry &entry, const QString &selected, Presence presence = MustBeThere);

    [[nodiscard]] const FacilityEntry &entry() const { return m_entry; }
    [[nodiscard]] QString selected() const { return m_selected; }
    [[nodiscard]] QString title() const { return m_entry.title(m_selected); }
    [[nodiscard]] QObject *object() const { return m_object.get(); }

    /*! Says on standard error which of the facility's objects cannot be opened; whether all can. */
    [[nodiscard]] bool reportProblems() const;

private:
    const FacilityEntry &m_entry;
    QString m_selected;
    std::unique_ptr<QObject> m_object;
};

} // namespace oz::tools
