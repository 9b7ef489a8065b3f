#pragma once

#include "base/UniqueFd.hpp"
#include "pps/PpsPath.hpp"
#include "pps/PpsWatcher.hpp"

#include <oz/PpsOpenMode.hpp>

#include <QByteArray>

#include <functional>
#include <memory>
#include <optional>

class QSocketNotifier;

namespace oz {

/*! An open PPS object: what PpsObject does once it knows which kind lies at its path. Results are 0 or an
 * errno. */
class PpsChannel
{
public:
    virtual ~PpsChannel() = default;
    [[nodiscard]] virtual int read(QByteArray *message) = 0;
    [[nodiscard]] virtual int write(const QByteArray &message) = 0;
    /*! Calls back, from the event loop of the calling thread, while a message waits. */
    [[nodiscard]] virtual int listen() = 0;
    /*! Calls back no longer. */
    virtual void stopListening() = 0;

    using Callback = std::function<void()>;
    /*! Opens what lies at \a path. \a blocking: read() waits for the next message. */
    [[nodiscard]] static int open(const PpsPath &path, PpsOpenMode::Types mode, bool blocking, Callback ready,
        std::unique_ptr<PpsChannel> *channel);
};

} // namespace oz
