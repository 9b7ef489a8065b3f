#pragma once

#include "pps/PpsPath.hpp"

#include <oz/PpsOpenMode.hpp>

#include <QByteArray>

#include <memory>

namespace oz {

/*! The receiver of a channel's news. It may destroy the channel while it is called. */
class PpsChannelOwner
{
public:
    virtual ~PpsChannelOwner() = default;
    /*! A message waits, or the end of the service. */
    virtual void messageWaits() = 0;
    /*! The service of a served object is back after it was away, and knows nothing of this client. */
    virtual void serviceReturned() = 0;
};

/*! An open PPS object: what PpsObject does once it knows which kind lies at its path. Results are 0 or an
 * errno. */
class PpsChannel
{
public:
    virtual ~PpsChannel() = default;
    [[nodiscard]] virtual int read(QByteArray *message) = 0;
    [[nodiscard]] virtual int write(const QByteArray &message) = 0;
    /*! Follows what happens to the object from the event loop of the calling thread. With \a announces, the
     * owner hears of messages that wait. */
    virtual void attach(bool announces) = 0;
    /*! Leaves the event loop of the calling thread. */
    virtual void detach() = 0;

    /*! Opens what lies at \a path. \a blocking: read() waits for the next message. */
    [[nodiscard]] static int open(const PpsPath &path, PpsOpenMode::Types mode, bool blocking,
        PpsChannelOwner *owner, std::unique_ptr<PpsChannel> *channel);
};

} // namespace oz
