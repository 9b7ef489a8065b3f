#include <oz/device/VibrationController.hpp>

#include "ControlErrors.hpp"
#include "Log.hpp"
#include "ThreadRule.hpp"

#include <QVariantMap>

#include <limits>

namespace oz::device {

namespace {

const QString PpsPath = QStringLiteral("/pps/services/vibrator");

constexpr uint FullIntensity = 100;
constexpr uint UntilStopped = std::numeric_limits<uint>::max();
constexpr uint LongestDuration = std::numeric_limits<qint32>::max();

constexpr const char *Start = "oz::device::VibrationController::start";
constexpr const char *Stop = "oz::device::VibrationController::stop";

void vibrateImpl(unsigned int intensity, unsigned int duration, const char *caller)
{
    const QVariantMap request{
        {QStringLiteral("duration"), qint32(std::min(duration, LongestDuration))},
        {QStringLiteral("intensity"), int(std::min(intensity, FullIntensity))},
    };
    bool ok = false;
    const QByteArray data = PpsObject::encode(request, &ok);
    if (!ok) {
        qCWarning(logDevice) << caller << ": failed to encode pps data";
        ControlErrors::noteMalformed();
        return;
    }
    PpsObject vibrator(PpsPath);
    if (!vibrator.open(PpsOpenMode::Publish)) {
        qCWarning(logDevice) << caller << ": error opening pps channel: " << vibrator.error();
        ControlErrors::noteFailure(vibrator);
        return;
    }
    if (vibrator.write(data)) {
        ControlErrors::noteSuccess();
    } else {
        qCWarning(logDevice) << caller << ": error writing pps channel: " << vibrator.error();
        ControlErrors::noteFailure(vibrator);
    }
}

} // namespace

VibrationController::VibrationController(QObject *parent) : QObject(parent)
{
    keepOnThread(this);
}

VibrationController::~VibrationController() = default;

bool VibrationController::isSupported() const
{
    return PpsObject(PpsPath).open(PpsOpenMode::Publish);
}

void VibrationController::start()
{
    start(FullIntensity);
}

void VibrationController::start(uint)
{
    vibrateImpl(FullIntensity, UntilStopped, Start);
}

void VibrationController::start(uint, uint milliseconds)
{
    vibrateImpl(FullIntensity, milliseconds, Start);
}

void VibrationController::stop()
{
    vibrateImpl(0, 0, Stop);
}

} // namespace oz::device
