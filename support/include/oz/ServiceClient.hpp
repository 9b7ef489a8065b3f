#pragma once

#include <QList>

#include <sys/types.h>

namespace oz {

/*! A connected client of a service. The ids of a server are never used twice. */
struct ServiceClient
{
    quint64 id = 0; //!< the connection
    pid_t pid = 0; //!< of the process that opened the object or device, as the kernel vouches
    uid_t uid = 0; //!< of the same process, as the next
    gid_t gid = 0; //!< its group
    QList<gid_t> groups{}; //!< further groups of the process
};

} // namespace oz
