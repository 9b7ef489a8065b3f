#pragma once

#include "facility/Facility.hpp"

#include <QMap>
#include <QString>

#include <optional>
#include <sys/types.h>

namespace oz::services {

/*! Which source feeds a facility, and its options. */
struct SourceChoice
{
    /*! The words of the configuration for "the source of the system that is there, or none", and for none. */
    inline static const QString Auto = QStringLiteral("auto");
    inline static const QString None = QStringLiteral("none");

    QString source = Auto;
    SourceOptions options;

    bool operator==(const SourceChoice &) const = default;
};

/*! The daemon's configuration: which source feeds which facility, and the simulated phone's file. */
class Configuration
{
public:
    /*! Reads "key = value" lines; throws Error with the file and line of whatever is wrong. */
    static Configuration parseFile(const QString &file);
    /*! All of it simulated. */
    static Configuration simulated();

    /*! The choice for \a facility: where none is named, "auto", or "simulated" after simulateAll(). */
    [[nodiscard]] SourceChoice choiceOf(const QString &facility) const;
    /*!
     * Chooses for a facility, by its name or that without hyphens, "SOURCE [OPTION=VALUE...]"; throws Error
     * where there is no such facility, source or option.
     */
    void choose(const QString &facility, const QString &choice);
    /*! Lets the simulated phone feed every facility. */
    void simulateAll();

    /*! The phone's file; empty for the default one. */
    QString phoneFile;
    /*! The users who may make requests that act for everybody; nothing where everybody may. */
    std::optional<gid_t> trustedGroup;
    /*! Sets trustedGroup by the group's name; throws Error where there is no such group. */
    void setTrustedGroup(const QString &name);

private:
    QMap<QString, SourceChoice> m_choices;
    QString m_default = SourceChoice::Auto;
};

/*! The facility of this name, or of this name without hyphens; null where there is none. */
[[nodiscard]] const Facility *findFacility(const QString &name);

} // namespace oz::services
