#include "hardware/Hardware.hpp"

namespace oz::services {

const WordList<Hardware::Hdmi> &hdmiWords()
{
    static const WordList<Hardware::Hdmi> words{
        {Hardware::Hdmi::None, "None", "none"}, {Hardware::Hdmi::Micro, "Micro", "micro"}};
    return words;
}

const Fields<Hardware> &deviceIdentifierFields()
{
    using C = Columns<Hardware>;
    static const Fields<Hardware> fields(QStringLiteral("/pps/services/private/deviceproperties"),
        {
            {"pin", "devicepin", C::text(&Hardware::pin).asPrivate(), "the identifier of this device"},
            {"serial-number", "deviceserialnumber", C::text(&Hardware::serialNumber).asPrivate(),
                "its serial number"},
            {"imei", "IMEI", C::text(&Hardware::imei).asPrivate(),
                "its identity in GSM, UMTS and LTE networks"},
            {"meid", "MEID", C::text(&Hardware::meid).asPrivate(), "its identity in CDMA networks"},
        },
        0640);
    return fields;
}

const Fields<Hardware> &deviceNameFields()
{
    using C = Columns<Hardware>;
    static const Fields<Hardware> fields(QStringLiteral("/pps/services/deviceproperties"),
        {
            {"hardware-id", "hardwareid", C::text(&Hardware::hardwareId),
                "the identifier of the hardware model"},
            {"name", "devicename", C::text(&Hardware::deviceName), "the name that the user gave it"},
            {"model", "modelname", C::text(&Hardware::modelName), "the name of the model"},
            {"model-number", "modelnumber", C::text(&Hardware::modelNumber), "the number of the model"},
        });
    return fields;
}

const Fields<Hardware> &inventoryFields()
{
    using C = Columns<Hardware>;
    static const auto count = [](const Hardware &hardware) {
        return hardware.processors ? std::optional(int(hardware.processors->size())) : std::nullopt;
    };
    static const Fields<Hardware> fields(QStringLiteral("/pps/services/hw_info/inventory"),
        {
            {"processors", "Processor_Numbers", C::number(count), "how many processors it has"},
            {"keyboard", "Keyboard", C::text(&Hardware::keyboard), "the kind of keyboard; none for none"},
            {"hdmi", "HDMI", C::words(&Hardware::hdmi, hdmiWords()), "the kind of HDMI connector"},
        });
    return fields;
}

} // namespace oz::services
