#pragma once

#include "source/Source.hpp"
#include "table/Fields.hpp"

#include <QList>

namespace oz::services {

/*! The device's hardware and names, as any source knows them. */
struct Hardware
{
    enum class Hdmi { None, Micro };

    struct Processor
    {
        std::optional<QString> model;
        std::optional<int> speed; //!< MHz

        bool operator==(const Processor &) const = default;
    };

    //! Identify the device and with it its owner: they are for no log.
    std::optional<QString> pin;
    std::optional<QString> serialNumber;
    std::optional<QString> imei;
    std::optional<QString> meid;

    std::optional<QString> hardwareId;
    std::optional<QString> deviceName;
    std::optional<QString> modelName;
    std::optional<QString> modelNumber;
    std::optional<QList<Processor>> processors;
    std::optional<QString> keyboard; //!< its kind, "none" for none
    std::optional<Hdmi> hdmi;

    bool operator==(const Hardware &) const = default;
};

using HardwareSource = StateSource<Hardware>;

[[nodiscard]] const WordList<Hardware::Hdmi> &hdmiWords();
/*! How it stands in the tree; of the inventory, without the processors, whose attributes have numbers. */
[[nodiscard]] const Fields<Hardware> &deviceIdentifierFields();
[[nodiscard]] const Fields<Hardware> &deviceNameFields();
[[nodiscard]] const Fields<Hardware> &inventoryFields();

/*! The source of another facility that knows whether the device can show its screen on wireless displays. */
class MiracastSupport
{
public:
    virtual ~MiracastSupport() = default;
    /*! Empty while it is not known. */
    [[nodiscard]] virtual std::optional<bool> isMiracastSupported() const = 0;
    /*! Whose changes tell that it may have changed. */
    [[nodiscard]] virtual const Source &source() const = 0;
};

} // namespace oz::services
