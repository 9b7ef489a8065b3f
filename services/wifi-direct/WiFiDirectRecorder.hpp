#pragma once

#include "facility/RecordedScript.hpp"

namespace oz::services {

/*! Records the peers around, and the phone's group with them. */
class WiFiDirectRecorder final : public FacilityRecorder
{
public:
    void sample(RecordedScript &script, const QStringList &recorded) override;

private:
    /*! The state that is seen; peers by their names in the recording. */
    struct Seen
    {
        bool supported = true;
        bool enabled = true;
        bool scanning = false;
        bool connecting = false;
        QString role = QStringLiteral("none"); //!< in a group: "owner", "client" or "none"
        QStringList members = {}; //!< of it, beside the phone; the owner first
        QStringList visible = {};
    };

    QString notePeer(RecordedScript &script, const QVariantMap &map, bool isMember);
    void noteGroup(RecordedScript &script, const QVariantMap &connection, const Seen &now);
    void orderChanges(RecordedScript &script, const Seen &now);

    RecordedDevices m_peers{QStringLiteral("peer")};
    Seen m_before;
};

} // namespace oz::services
