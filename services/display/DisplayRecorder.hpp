#pragma once

#include "display/Displays.hpp"
#include "facility/RecordedScript.hpp"

namespace oz::services {

/*! Records which displays there are, and how they change. */
class DisplayRecorder final : public FacilityRecorder
{
public:
    void sample(RecordedScript &script, const QStringList &recorded) override;

private:
    void orderChanges(RecordedScript &script, int id, const Display &now) const;

    DisplayTree::Displays m_displays;
};

} // namespace oz::services
