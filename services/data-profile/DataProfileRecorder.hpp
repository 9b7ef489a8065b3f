#pragma once

#include "facility/RecordedScript.hpp"

namespace oz::services {

/*!
 * Records the profiles that there are at the beginning, and whether they are enabled. Connections follow from
 * the rest of the phone, and from applications.
 */
class DataProfileRecorder final : public FacilityRecorder
{
public:
    void sample(RecordedScript &script, const QStringList &recorded) override;

private:
    QMap<QString, bool> m_enabled;
};

} // namespace oz::services
