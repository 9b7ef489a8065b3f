#pragma once

#include "linux/UdevMonitor.hpp"
#include "linux/Worker.hpp"
#include "vibration/Vibration.hpp"

namespace oz::services {

/*!
 * A vibration motor that is an input device with force feedback. It is open only while it runs; the kernel
 * stops it when the daemon dies.
 */
class EvdevVibrator final : public VibrationSource
{
public:
    /*! The input device \a device ("event3"), else the first that can rumble and is nothing else, as a game
     * controller would be. */
    explicit EvdevVibrator(const QString &device = {});
    ~EvdevVibrator() override;

    void drive(int intensity, const Done &done) override;

private:
    class Motor;

    void find();

    QString m_device;
    std::shared_ptr<Motor> m_motor; // used by the worker alone
    UdevMonitor m_monitor;
    SerialWorker m_worker;
};

} // namespace oz::services
