#pragma once

#include "publishing/Publisher.hpp"
#include "publishing/WarnOnce.hpp"
#include "vibration/Vibration.hpp"

#include <QElapsedTimer>
#include <QTimer>

#include <memory>

namespace oz::services {

/*!
 * The vibrator service. It serves "/pps/services/vibrator", which takes maps of "duration" in milliseconds
 * (0 stops, 2147483647 is until stopped) and "intensity" (0 stops, up to 100). It answers with what it took,
 * or with "err" and "errstr". A request replaces the one before, of whichever client, and outlives its
 * client. What the motor does is told by "/pps/services/vibration/activity": "running", "runs", "run" while
 * there is one, and "last". Without a motor, or where nobody knows of one, there is no such object to serve.
 */
class VibrationPublisher final : public PublisherOf<VibrationSource>
{
public:
    VibrationPublisher(const QString &facility, VibrationSource &source, Tree &tree);
    ~VibrationPublisher() override;

private:
    class Vibrator;

    void publishState(const VibrationState &state) override;
    void publishAbsence() override;
    void publishActivity();
    [[nodiscard]] QVariantMap onRequest(const QVariantMap &request);
    void run(int duration, int intensity);
    void endRun(const QString &how);
    void finish(const QString &how);
    void drive(int intensity);

    StatePublisher m_activity;
    std::unique_ptr<Vibrator> m_vibrator;
    VibrationActivity m_told;
    QElapsedTimer m_running; // which no change of the clock disturbs
    QTimer m_end;
    WarnOnce m_warn;
};

} // namespace oz::services
