#pragma once

#include <QList>
#include <QObject>
#include <QString>

#include <optional>

namespace oz::services {

/*! What the device is made of and how it is called, whoever knows it. */
class HardwareSource : public QObject
{
    Q_OBJECT

public:
    enum class Hdmi { None, Micro };

    struct Processor
    {
        QString model;
        int speed = 0; //!< MHz
    };

    struct State
    {
        //! Identify the device and with it its owner: they are for no log.
        std::optional<QString> pin;
        std::optional<QString> serialNumber;
        std::optional<QString> imei;
        std::optional<QString> meid;

        std::optional<QString> hardwareId;
        std::optional<QString> deviceName;
        std::optional<QString> modelName;
        std::optional<QString> modelNumber;
        QList<Processor> processors;
        std::optional<QString> keyboard; //!< its kind, "none" for none
        std::optional<Hdmi> hdmi;
        std::optional<bool> miracast; //!< whether it can show its screen on wireless displays
    };

    /*! The state; nothing while it is not known yet, which is then not published either. */
    [[nodiscard]] virtual std::optional<State> state() const = 0;

Q_SIGNALS:
    void changed();
};

} // namespace oz::services
