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
    int error;

    /*! The path and the error, with the owner if it is a matter of permission. */
    [[nodiscard]] QString text() const;
};

/*! Tries to open the object at the device path \a path, and returns 0 or an errno. */
[[nodiscard]] int tryToOpen(const QString &path);

/*! Returns the problems of those \a paths that cannot be opened. */
[[nodiscard]] std::vector<Problem> problemsOf(const QStringList &paths);

/*! An object of a facility's class, for one of its instances. */
class FacilityInstance
{
public:
    enum Presence {
        MustExist,
        MayAppear,
        MayBeUnselected, //!< accepts no selection even if the facility needs one
    };

    /*! Throws CommandError if \a selected is not present as \a presence requires. */
    FacilityInstance(const FacilityEntry &entry, const QString &selected, Presence presence = MustExist);

    [[nodiscard]] const FacilityEntry &entry() const { return m_entry; }
    [[nodiscard]] QString selected() const { return m_selected; }
    [[nodiscard]] QString title() const { return m_entry.title(m_selected); }
    [[nodiscard]] QObject *object() const { return m_object.get(); }

    /*! Prints which of the facility's objects cannot be opened, and returns true if all can. */
    [[nodiscard]] bool reportProblems() const;

private:
    const FacilityEntry &m_entry;
    QString m_selected;
    std::unique_ptr<QObject> m_object;
};

} // namespace oz::tools
