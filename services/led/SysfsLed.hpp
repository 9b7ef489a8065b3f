#pragma once

#include "led/Led.hpp"
#include "linux/UdevMonitor.hpp"
#include "linux/Worker.hpp"

#include <QMap>
#include <QTimer>

#include <vector>

namespace oz::services {

class StateStore;

/*!
 * The notification LED among the kernel's (/sys/class/leds): one that has all colours, else one of each of
 * the elements, else one of a single colour, which stands for all of them. What it showed before, and by
 * which trigger, is put back a moment after the last flash, also by the daemon after one that was killed.
 */
class SysfsLed final : public LedSource
{
public:
    /*! The LED of the name \a device, else one that is for notifications. */
    SysfsLed(StateStore &store, const QString &device = {});
    ~SysfsLed() override;

    void light(const LedState::Elements &elements, const Done &done) override;

    /*! One of the kernel's LEDs, and which elements it shows. */
    struct Lamp
    {
        QString folder;
        QStringList colors; //!< of one that has several: their names in its order
        LedState::Elements shows; //!< of one that has one colour

        bool operator==(const Lamp &) const = default;
    };
    using Lamps = std::vector<Lamp>;
    /*! The original content of the lamps' files, in the order in which it has to be restored. */
    using Found = QList<QPair<QString, QString>>;

private:
    void find();
    void step();
    void putBack();
    void report(int error, const QString &text);

    StateStore &m_store;
    QString m_device;
    Lamps m_lamps;
    LedState m_state;
    LedState::Elements m_wanted;
    std::vector<Done> m_waiting; // for what is wanted
    std::optional<Found> m_found; // while the lamps are taken
    bool m_isBusy = false;
    bool m_isApplied = true;
    QTimer m_rest;
    UdevMonitor m_monitor;
    SerialWorker m_worker;
};

} // namespace oz::services
