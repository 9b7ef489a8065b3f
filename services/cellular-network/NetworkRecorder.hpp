#pragma once

#include "facility/RecordedScript.hpp"

#include <optional>

namespace oz::services {

/*!
 * Records the network that serves, each of its cells as a network of its own under a name of the recording.
 */
class NetworkRecorder final : public FacilityRecorder
{
public:
    void sample(RecordedScript &script, const QStringList &recorded) override;

private:
    [[nodiscard]] QString nameOf(const QVariantMap &network, bool isRestricted);

    QList<std::pair<QVariantMap, QString>> m_networks; // what each is like, and its name
    QString m_serving;
    QVariant m_strength;
};

} // namespace oz::services
