#pragma once

#include "source/Source.hpp"
#include "table/AskedRequest.hpp"
#include "table/Fields.hpp"

#include <QDateTime>

namespace oz::services {

/*! The vibration motor, as any source knows it. */
struct VibrationState
{
    std::optional<bool> present; //!< whether there is a motor

    bool operator==(const VibrationState &) const = default;
};

class VibrationSource : public StateSource<VibrationState>
{
public:
    /*! Lets the motor run at an \a intensity of 1 to 100 until it is told otherwise; 0 stops it. */
    virtual void drive(int intensity, const Done &done) = 0;
};

/*! Publishes the motor's activity for observers. */
struct VibrationActivity
{
    struct Run
    {
        QDateTime started;
        int duration = 0; //!< milliseconds, as asked for
        int intensity = 0;
        std::optional<qint64> ran = {}; //!< milliseconds, once it is over
        QString end = {}; //!< how it ended: "done", "stopped" or "replaced"
    };

    std::optional<Run> run; //!< while it runs
    std::optional<Run> last; //!< the one before
    quint64 runs = 0; //!< since the service started
};

/*! How the activity stands in the tree. */
[[nodiscard]] const Fields<VibrationActivity> &vibrationActivityFields();
/*! The requests that applications make of the motor, and the object that serves them. */
[[nodiscard]] std::vector<AskedRequest> vibrationRequests();
inline const QString VibratorPath = QStringLiteral("/pps/services/vibrator");
inline const QString VibrationDuration = QStringLiteral("duration");
inline const QString VibrationIntensity = QStringLiteral("intensity");

} // namespace oz::services
