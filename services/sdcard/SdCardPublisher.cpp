#include "sdcard/SdCardPublisher.hpp"

namespace oz::services {

SdCardPublisher::SdCardPublisher(const QString &facility, SdCardSource &source, Tree &tree)
    : PublisherOf(facility, source, tree),
      m_card(tree, QStringLiteral("/pps/system/filesystem/removable/sdcard"))
{
    declare(m_card);
    follow();
}

void SdCardPublisher::publishState(const SdCardState &state)
{
    QVariantMap attributes;
    insertKnown(&attributes, QStringLiteral("mounted"), state.mounted);
    insertKnown(&attributes, QStringLiteral("busy"), state.busy);
    m_card.publish(attributes);
}

} // namespace oz::services
