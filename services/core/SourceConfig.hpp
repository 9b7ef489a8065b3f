#pragma once

#include <QMap>
#include <QString>

namespace oz::services {

/*! The daemon's configuration: which source feeds which facility, and the simulated phone's file. */
class SourceConfig
{
public:
    static constexpr const char *Simulated = "simulated";

    /*! Reads "key = value" lines; throws Error with the file and line of whatever is wrong. */
    static SourceConfig parseFile(const QString &file);

    /*! The source of \a facility, "simulated" where none is named. */
    [[nodiscard]] QString sourceOf(const QString &facility) const;
    /*! Names the source of a facility; throws Error where there is no such facility or source. */
    void setSource(const QString &facility, const QString &source);

    /*! The phone's file; empty for the default one. */
    QString phoneFile;

private:
    QMap<QString, QString> m_sources;
};

} // namespace oz::services
