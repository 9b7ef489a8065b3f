#pragma once

#include <QHash>
#include <QMetaObject>
#include <QObject>
#include <QString>
#include <QStringList>

#include <functional>
#include <memory>
#include <vector>

namespace oz::tools {

/*! A facility of the library as the command offers it. */
struct FacilityEntry
{
    QString name;
    QString help;
    const QMetaObject *type;
    QString selector; //!< the option that tells which one is meant ("index"), empty where there is only one
    std::function<std::unique_ptr<QObject>(const QString &selected)> make;

    /*! The bool property that is true while what a call began goes on; empty: calls are done when they
     * return. */
    QByteArray busy = {};
    /*! The object that calls are sent to, where the class does not keep it open. */
    QString service = {};
    /*! The methods that a signal answers later, with its name; its first argument is the result. */
    QHash<QByteArray, QByteArray> answers = {};
    /*! The dynamic properties that its methods read. */
    QList<QByteArray> dynamicProperties = {};
    /*! The objects that tell what the facility does, whoever asked for it. */
    QStringList activity = {};
    /*! Reads the values, where they do not change by themselves. */
    std::function<void(QObject *object)> readAnew = {};
    /*! Whether the first values are all there, where some come from the event loop. */
    std::function<bool(const QObject *object)> isComplete = {};
    /*! What can be selected now, where nothing is selected by itself. */
    std::function<QStringList()> choices = {};

    // For the table.
    FacilityEntry busyWhile(const char *property) &&;
    FacilityEntry servedBy(const char *path) &&;
    FacilityEntry answeredBy(const QHash<QByteArray, QByteArray> &signalsOfMethods) &&;
    FacilityEntry reading(const QList<QByteArray> &properties) &&;
    FacilityEntry toldBy(const char *path) &&;
};

/*! Every facility. A new one is one line there. */
[[nodiscard]] const std::vector<FacilityEntry> &facilityTable();

} // namespace oz::tools
