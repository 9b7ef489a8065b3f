#pragma once

#include <oz/OzSupportGlobal.hpp>

#include <QSize>
#include <QString>
#include <QVariantMap>

#include <map>

/*!
 * How the displays stand in the tree: one state object, with an attribute for each display, whose name is its
 * identifier and whose value is a map.
 */
namespace oz::DisplayTree {

/*! The object that the display service publishes. */
inline const QString PpsPath = QStringLiteral("/pps/services/display/displays");

/*! The properties of a display; the values are those of ScreenProperty. */
struct Display
{
    QString name; //!< empty where not known
    int kind = 0; //!< a ScreenDisplayKind
    bool attached = false; //!< it can be seen now
    bool detachable = false; //!< it can be taken off
    QSize size{0, 0}; //!< pixels, in the native orientation
    QSize physicalSize{0, 0}; //!< millimetres; 0 where not known
    int rotation = 0; //!< degrees
    int technology = 0; //!< see ScreenProperty::Technology

    /*! True if all properties are equal. */
    bool operator==(const Display &) const = default;
};

/*! The displays by their identifiers, which are 0 or more. */
using Displays = std::map<int, Display>;

/*! The attributes of an object with these displays. */
[[nodiscard]] OZ_SUPPORT_EXPORT QVariantMap toAttributes(const Displays &displays);
/*! The displays of an object's attributes; those that are no map under a number are left out, and members
 * that are missing are 0, false or empty. */
[[nodiscard]] OZ_SUPPORT_EXPORT Displays fromAttributes(const QVariantMap &attributes);

} // namespace oz::DisplayTree
