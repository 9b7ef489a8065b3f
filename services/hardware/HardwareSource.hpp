#pragma once

#include "source/Source.hpp"

#include <QList>

namespace oz::services {

struct HardwareState
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

    bool operator==(const HardwareState &) const = default;
};

/*! What the device is made of and how it is called, whoever knows it. */
using HardwareSource = StateSource<HardwareState>;

} // namespace oz::services
