#pragma once

#include "publishing/Publisher.hpp"
#include "sdcard/SdCardSource.hpp"

namespace oz::services {

/*! Publishes "/pps/system/filesystem/removable/sdcard": "mounted" and "busy", booleans. */
class SdCardPublisher final : public PublisherOf<SdCardSource>
{
public:
    SdCardPublisher(const QString &facility, SdCardSource &source, Tree &tree);

private:
    void publishState(const SdCardState &state) override;

    StatePublisher m_card;
};

} // namespace oz::services
