#pragma once

#include "facility/RecordedScript.hpp"

namespace oz::services {

/*! Records the sinks around, and the session with one of them. */
class MiracastRecorder final : public FacilityRecorder
{
public:
    void sample(RecordedScript &script, const QStringList &recorded) override;

private:
    /*! The state that is seen; sinks by their names in the recording. */
    struct Seen
    {
        int stop = 0; //!< the code of why the service does not run
        QStringList visible = {};
        QString connecting = {};
        QString sink = {}; //!< of the session
        bool isPaused = false;
    };

    void orderChanges(RecordedScript &script, const Seen &now);

    RecordedDevices m_sinks{QStringLiteral("sink")};
    Seen m_before;
};

} // namespace oz::services
