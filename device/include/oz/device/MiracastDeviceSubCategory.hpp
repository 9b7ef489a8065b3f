#pragma once

#include <oz/device/OzDeviceGlobal.hpp>

#include <QObject>

namespace oz::device {

/*!
 * The kind of device that a sink is in its category: the sub-categories of primary device types in Wi-Fi
 * Protected Setup, as the Wi-Fi Simple Configuration standard of the Wi-Fi Alliance has them, numbered
 * through all categories. Holds the enumeration only; it has no instances.
 */
class OZ_DEVICE_EXPORT MiracastDeviceSubCategory
{
    Q_GADGET

public:
    /*! The values. */
    enum Type {
        Unknown = 0,
        Keyboard = 1, //!< from here on: input
        Mouse = 2,
        Joystick = 3,
        Trackball = 4,
        GamingController = 5,
        Remote = 6,
        Touchscreen = 7,
        BiometricReader = 8,
        BarcodeReader = 9,
        PrinterOrPrintServer = 10, //!< from here on: printers, copiers, fax machines and scanners
        Scanner = 11,
        Fax = 12,
        Copier = 13,
        AllInOne = 14,
        DigitalStillCamera = 15, //!< from here on: cameras
        VideoCamera = 16,
        WebCamera = 17,
        SecurityCamera = 18,
        NAS = 19, //!< from here on: storage
        AP = 20, //!< from here on: network infrastructure
        Router = 21,
        Switch = 22,
        Gateway = 23,
        Television = 24, //!< from here on: displays
        ElectronicPictureFrame = 25,
        Projector = 26,
        Monitor = 27,
        DAR = 28, //!< from here on: multimedia
        PVR = 29,
        MCX = 30,
        SetTopBox = 31,
        MediaServerAdapterOrExtender = 32,
        PortableVideoPlayer = 33,
        XBox = 34, //!< from here on: gaming
        XBox360 = 35,
        PlayStation = 36,
        GameConsoleOrConsoleAdapter = 37,
        PortableGamingDevice = 38,
        WindowsMobile = 39, //!< from here on: telephones
        PhoneSingleMode = 40,
        PhoneDualMode = 41,
        SmartphoneSingleMode = 42,
        SmartphoneDualMode = 43,
        AudioTunerReceiver = 44, //!< from here on: audio
        Speakers = 45,
        PortableMusicPlayer = 46,
        Headset = 47,
        Headphones = 48,
        Microphone = 49,
        PC = 50, //!< from here on: computers
        Server = 51,
        MediaCenter = 52,
        UltraMobilePC = 53,
        Notebook = 54,
        Desktop = 55,
        MobileInternetDevice = 56,
        Netbook = 57,
        Tablet = 58,
    };
    Q_ENUM(Type)

    MiracastDeviceSubCategory() = delete;
};

} // namespace oz::device
