#pragma once

#include "ozdevice/FacilityInstance.hpp"

#include <QByteArray>
#include <QMetaProperty>
#include <QVariant>

#include <optional>

namespace oz::tools {

/*! A writable property of a facility, and the value that it shall have. */
class PropertySetting
{
public:
    /*! Throws CommandError where \a name is no property that can be written, or \a text no value of it. */
    PropertySetting(const FacilityEntry &entry, const QString &name, const std::optional<QString> &text);
    /*! The same of "name=value". */
    [[nodiscard]] static PropertySetting parse(const FacilityEntry &entry, const QString &assignment);

    /*! Sets it; throws CommandError where that is refused. */
    void applyTo(const FacilityInstance &instance) const;

    /*! The properties that can be written, the dynamic ones too. */
    [[nodiscard]] static QStringList namesOf(const FacilityEntry &entry);

private:
    QMetaProperty m_property;
    QByteArray m_name; // of a dynamic property
    QVariant m_value;
};

} // namespace oz::tools
