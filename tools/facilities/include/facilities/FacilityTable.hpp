#pragma once

#include <QHash>
#include <QMetaEnum>
#include <QMetaObject>
#include <QObject>
#include <QString>
#include <QStringList>

#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace oz::tools {

/*! The enumeration of a method that returns an enumerator as a number. */
struct ReturnedEnum
{
    QMetaEnum names;
    std::optional<int> success; //!< of a request: the enumerator of an accepted one
};

/*! The answer to a method that has returned before the service answers. */
struct LaterAnswer
{
    QByteArray signal = {}; //!< its first argument, if any, is the result
    /*! The bool property that is true until the answer. A quick answer can arrive before the class sees
     * that the request has begun; then the property never becomes true, and no signal follows. */
    QByteArray pending = {};
};

/*! Facts about a facility's methods that their signatures do not tell. */
struct CallTraits
{
    /*! The bool property that is true while the effect of a call lasts; empty if calls have no such effect.
     */
    QByteArray busy = {};
    /*! The object that receives the calls, if the class cannot report that it is missing. */
    QString service = {};
    /*! The object that receives requests with a result; "%1" stands for the selected instance. */
    QString control = {};
    QHash<QByteArray, LaterAnswer> answers = {}; //!< by method
    QHash<QByteArray, ReturnedEnum> returns = {}; //!< by method
    QList<QByteArray> falseOnFailure = {}; //!< methods whose result is false if they fail
    /*! The dynamic properties that its methods read. */
    QList<QByteArray> dynamicProperties = {};
    QList<QByteArray> methodsWithoutSelection = {}; //!< of a facility that needs a selection otherwise
};

/*! The unit of a property's values. */
struct Measure
{
    QString unit;
    QString unknown; //!< the text of the unknown value, which has no unit
};

/*! A facility of the library as the command offers it. */
struct FacilityEntry
{
    QString name;
    QString help;
    const QMetaObject *type = nullptr;
    std::function<std::unique_ptr<QObject>(const QString &selected)> make;

    /*! Other names that the command accepts. */
    QStringList aliases = {};
    /*! The facilities of the daemon that feed this one; empty for the one of the same name. */
    QStringList daemonParts = {};
    /*! The objects of the tree without which the facility does not work. */
    QStringList objects = {};
    /*! The main properties and attributes, in the order of an overview. */
    QStringList glance = {};
    QHash<QString, Measure> measures = {}; //!< by property

    CallTraits calls = {};
    /*! The objects that show what the facility does, whichever process asked for it. */
    QStringList activity = {};
    /*! Reads values that do not change by themselves, and returns false on failure. */
    std::function<bool(QObject *object)> refresh = {};
    /*! Returns whether all first values are there, if some arrive through the event loop. */
    std::function<bool(const QObject *object)> isComplete = {};

    /*! The option that selects one of several instances ("index"); empty if there is only one. */
    QString selector = {};
    /*! The instances that exist now. */
    std::function<QStringList()> instances = {};
    /*! Returns whether an instance that does not exist can appear later. */
    std::function<bool(const QString &selected)> mayAppear = {};
    /*! True if an object without a selected instance has no values. */
    bool needsSelection = false;

    [[nodiscard]] bool hasName(const QString &word) const { return word == name || aliases.contains(word); }
    /*! The name with the selected instance. */
    [[nodiscard]] QString title(const QString &selected) const;
    /*! Returns the instances that exist now, or one empty text for a facility without instances. */
    [[nodiscard]] QStringList selections() const;
    /*! The facilities of the daemon that feed this one. */
    [[nodiscard]] QStringList feedingParts() const;
};

/*! All facilities, one row each. */
[[nodiscard]] const std::vector<FacilityEntry> &facilityTable();

/*! The facilities of a phone, without the network interfaces of the machine. */
[[nodiscard]] std::vector<const FacilityEntry *> phoneFacilities();

/*! The names of all facilities, in the order of the table. */
[[nodiscard]] QStringList facilityNames();

/*! The facility with the name or alias \a name; null if there is none. */
[[nodiscard]] const FacilityEntry *findFacility(const QString &name);

} // namespace oz::tools
