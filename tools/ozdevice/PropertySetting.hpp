#pragma once

#include "ozdevice/FacilityInstance.hpp"

#include <QByteArray>
#include <QMetaProperty>
#include <QVariant>

#include <optional>

namespace oz::tools {

/*! A writable property of a facility with its new value. */
class PropertySetting
{
public:
    /*! Throws CommandError if \a name is not a writable property, or \a text not one of its values. */
    PropertySetting(const FacilityEntry &entry, const QString &name, const std::optional<QString> &text);
    /*! Reads "name=value"; throws as the constructor does. */
    [[nodiscard]] static PropertySetting parse(const FacilityEntry &entry, const QString &assignment);

    /*! Sets the property; throws CommandError if that fails. */
    void applyTo(const FacilityInstance &instance) const;

    /*! Returns the writable properties, including the dynamic ones. */
    [[nodiscard]] static QStringList namesOf(const FacilityEntry &entry);

private:
    QMetaProperty m_property;
    QByteArray m_name; // of a dynamic property; empty for another
    QVariant m_value;
};

} // namespace oz::tools
