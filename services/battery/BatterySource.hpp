#pragma once

#include <QObject>
#include <QString>

#include <optional>

namespace oz::services {

/*! What the battery and its chargers are doing, whoever knows it. */
class BatterySource : public QObject
{
    Q_OBJECT

public:
    enum class Charging { No, Yes, Full };
    enum class Condition { Unknown, Good, Bad };

    struct Battery
    {
        int level = 0; //!< percent
        Condition condition = Condition::Unknown;
        int fullChargeCapacity = 0; //!< mAh
        int cycleCount = 0;
        std::optional<double> temperature; //!< degrees Celsius
    };

    struct State
    {
        Charging charging = Charging::No;
        int chargers = 0; //!< the number that is connected
        std::optional<Battery> battery; //!< nothing while it is taken out
        QString wirelessReceiver; //!< its identifier, empty where the device lies on no wireless charger
    };

    /*! The state; nothing while it is not known yet, which is then not published either. */
    [[nodiscard]] virtual std::optional<State> state() const = 0;

Q_SIGNALS:
    void changed();
};

} // namespace oz::services
