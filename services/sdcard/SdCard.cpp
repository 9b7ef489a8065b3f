#include "sdcard/SdCard.hpp"

namespace oz::services {

const Fields<SdCard> &sdCardFields()
{
    using C = Columns<SdCard>;
    static const Fields<SdCard> fields(QStringLiteral("/pps/system/filesystem/removable/sdcard"),
        {
            {"mounted", "mounted", C::truth(&SdCard::mounted), "whether a card is mounted"},
            {"busy", "busy", C::truth(&SdCard::busy), "whether the card is being read or written"},
        });
    return fields;
}

} // namespace oz::services
