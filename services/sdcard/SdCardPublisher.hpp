#pragma once

#include "core/StatePublisher.hpp"
#include "sdcard/SdCardSource.hpp"

namespace oz::services {

/*! Publishes "/pps/system/filesystem/removable/sdcard": "mounted" and "busy", booleans. */
class SdCardPublisher : public QObject
{
public:
    explicit SdCardPublisher(SdCardSource &source);

private:
    void publish();

    SdCardSource &m_source;
    StatePublisher m_card;
};

} // namespace oz::services
