#pragma once

#include <oz/DevicePathWatcher.hpp>
#include <oz/PpsObject.hpp>

#include <QOrientationReading>
#include <QSensorBackend>

#include <memory>

namespace oz::sensors {

/*! Whether the tree has an orientation now. */
[[nodiscard]] bool isOrientationPublished();

/*! Reads the orientation from the tree. */
class OrientationBackend final : public QSensorBackend
{
    Q_OBJECT

public:
    explicit OrientationBackend(QSensor *sensor);

    /*! The event loop delivers the first reading too. */
    void start() override;
    void stop() override;

private:
    [[nodiscard]] bool openOrWait();
    void read();

    PpsObject m_pps;
    std::shared_ptr<PpsObject> m_readers; // open while this reads
    std::unique_ptr<DevicePathWatcher> m_watcher; // while the object is missing
    QOrientationReading m_reading;
    bool m_isKnown = false; // the tree has told an orientation since start()
};

} // namespace oz::sensors
