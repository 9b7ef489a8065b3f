#pragma once

#include "facility/RecordedScript.hpp"

#include <QObject>

#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace oz::services {

struct Facility;
struct Setting;

/*!
 * Writes down what a device does, whoever feeds its facilities, as a scenario that leads the simulated phone
 * through the same values: what the tree tells, as it changes.
 */
class Recorder : public QObject
{
    Q_OBJECT

public:
    /*! The facilities that can be recorded; the others are what applications do, or what they ask for. */
    [[nodiscard]] static QStringList facilities();

    /*! Gives the names of sinks in what sources say of themselves. */
    using SinkNames = std::function<QStringList()>;
    /*! Begins with what \a tree tells now. \a facilities are some of facilities(); throws Error for others.
     * With \a sinkNames it also writes down, for people, what becomes of the sources of all facilities. */
    Recorder(const Tree &tree, const QStringList &facilities, bool keepsIdentifiers,
        const SinkNames &sinkNames = {});

    [[nodiscard]] const RecordedScript &script() const { return m_script; }
    /*! \a line, for people, as this recording masks it. */
    [[nodiscard]] QString masked(const QString &line);

private:
    void sample();
    void recordSettings(const Facility &facility);
    void recordSources();
    void noteIdentifiers();
    [[nodiscard]] std::optional<QVariant> valueSeen(const Facility &facility, const Setting &setting);

    RecordedScript m_script;
    QStringList m_facilities;
    SinkNames m_sinkNames;
    std::vector<std::unique_ptr<FacilityRecorder>> m_recorders;
    bool m_isPlanned = false;
    QVariantMap m_recorded; // what each setting was told last
    QVariantMap m_sources; // what each facility's source said last
};

} // namespace oz::services
