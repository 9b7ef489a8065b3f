#pragma once

#include "ozdevice/FacilityTable.hpp"

#include <oz/PpsObject.hpp>

namespace oz::tools {

/*!
 * The time of a call from before it is made until what it began has ended, for facilities whose calls go on
 * after they returned.
 */
class LastingCall
{
public:
    /*! Throws CommandError where the facility's service is not there. */
    LastingCall(const FacilityEntry &entry, QObject *object);

    /*! Runs the event loop until the facility is not busy any more, its service is gone or a signal comes;
     * the exit status. */
    [[nodiscard]] int waitForEnd();

private:
    [[nodiscard]] bool isBusy() const;

    const FacilityEntry &m_entry;
    QObject *m_object;
    PpsObject m_service; // open all the time, so that the end of the service is heard
};

} // namespace oz::tools
