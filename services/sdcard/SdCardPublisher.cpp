#include "sdcard/SdCardPublisher.hpp"

namespace oz::services {

SdCardPublisher::SdCardPublisher(SdCardSource &source)
    : m_source(source), m_card(QStringLiteral("/pps/system/filesystem/removable/sdcard"))
{
    connect(&source, &SdCardSource::changed, this, &SdCardPublisher::publish);
    publish();
}

void SdCardPublisher::publish()
{
    const auto card = m_source.state();
    if (!card)
        return;
    m_card.publish({{QStringLiteral("mounted"), card->mounted}, {QStringLiteral("busy"), card->busy}});
}

} // namespace oz::services
