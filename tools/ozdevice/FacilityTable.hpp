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

/*! What the number is that a method returns. */
struct ReturnedEnum
{
    QMetaEnum names;
    std::optional<int> success; //!< of a request: the one that says that it was taken
};

/*! How a call is answered after it has returned. */
struct LaterAnswer
{
    LaterAnswer(const char *aSignal = "", const char *aProperty = "") : signal(aSignal), whileTrue(aProperty)
    {
    }

    QByteArray signal; //!< its first argument, if any, is the result
    /*! The bool property that is true meanwhile, where a quick answer may come without the signal: the class
     * then never saw that it had begun. */
    QByteArray whileTrue;
};

/*! What the values of a property are measured in. */
struct Measure
{
    QString unit;
    QString unknown; //!< the text of the value that measures nothing
};

/*! A facility of the library as the command offers it. */
struct FacilityEntry
{
    QString name;
    QString help;
    const QMetaObject *type;
    QString selector; //!< the option that tells which one is meant ("index"), empty where there is only one
    std::function<std::unique_ptr<QObject>(const QString &selected)> make;

    /*! Older spellings of the name, and what else it answers to. */
    QStringList aliases = {};
    /*! What the daemon calls that which feeds it, where that is not its name. */
    QStringList parts = {};
    /*! The objects that it cannot be without. */
    QStringList objects = {};

    /*! The bool property that is true while what a call began goes on; empty: calls are done when they
     * return. */
    QByteArray busy = {};
    /*! The object that calls are sent to, where a call cannot tell that it was not there. */
    QString service = {};
    /*! The object that requests are sent to which return a result; "%1" stands for what is selected. */
    QString control = {};
    /*! The methods that are answered later. */
    QHash<QByteArray, LaterAnswer> answers = {};
    /*! The methods that return an enumerator as a number. */
    QHash<QByteArray, ReturnedEnum> returns = {};
    /*! The dynamic properties that its methods read. */
    QList<QByteArray> dynamicProperties = {};
    /*! The objects that tell what the facility does, whoever asked for it. */
    QStringList activity = {};
    /*! Reads the values, where they do not change by themselves; whether that worked. */
    std::function<bool(QObject *object)> readAnew = {};
    /*! Whether the first values are all there, where some come from the event loop. */
    std::function<bool(const QObject *object)> isComplete = {};

    /*! What its properties are measured in, by their names. */
    QHash<QString, Measure> measures = {};

    /*! What can be selected now. */
    std::function<QStringList()> instances = {};
    /*! Whether one that is not there now can come, and is followed then. */
    std::function<bool(const QString &selected)> mayCome = {};
    /*! Whether it stands for nothing unless one is selected, but for these methods. */
    bool isNothingUnselected = false;
    QList<QByteArray> methodsOfNone = {};

    [[nodiscard]] bool isCalled(const QString &word) const { return word == name || aliases.contains(word); }
    /*! Its name, and which one. */
    [[nodiscard]] QString title(const QString &selected) const;
    /*! What the daemon calls that which feeds it. */
    [[nodiscard]] QStringList fedParts() const { return parts.isEmpty() ? QStringList{name} : parts; }

    // For the table.
    FacilityEntry alsoCalled(const QStringList &words) &&;
    FacilityEntry from(const QStringList &paths) &&;
    FacilityEntry busyWhile(const char *property) &&;
    FacilityEntry servedBy(const char *path) &&;
    FacilityEntry controlledBy(const char *path) &&;
    FacilityEntry answeredBy(const QHash<QByteArray, LaterAnswer> &answersOfMethods) &&;
    template <typename Enumeration>
    FacilityEntry returning(const QList<QByteArray> &methods, std::optional<Enumeration> success = {}) &&
    {
        for (const QByteArray &method : methods) {
            returns.insert(method,
                {QMetaEnum::fromType<Enumeration>(),
                    success ? std::optional(int(*success)) : std::optional<int>()});
        }
        return std::move(*this);
    }
    FacilityEntry reading(const QList<QByteArray> &properties) &&;
    FacilityEntry toldBy(const char *path) &&;
    FacilityEntry measuredIn(const QHash<QString, Measure> &measuresOfProperties) &&;
};

/*! Every facility. A new one is one line there. */
[[nodiscard]] const std::vector<FacilityEntry> &facilityTable();

/*! Those that are part of a phone; the machine's own network interfaces are none. */
[[nodiscard]] std::vector<const FacilityEntry *> phoneFacilities();

/*! The names of all, in the order of the table. */
[[nodiscard]] QStringList facilityNames();

/*! The facility of that name or older spelling; null where there is none. */
[[nodiscard]] const FacilityEntry *findFacility(const QString &name);

} // namespace oz::tools
