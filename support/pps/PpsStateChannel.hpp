#pragma once

#include "pps/PpsChannel.hpp"
#include "pps/PpsStateWriter.hpp"
#include "pps/PpsWatcher.hpp"

#include <mutex>
#include <optional>

namespace oz {

/*! A regular file that publishers replace. */
class PpsStateChannel final : public PpsChannel, private FileSubscriber
{
public:
    PpsStateChannel(const PpsPath &path, bool blocking, PpsChannelOwner *owner);
    ~PpsStateChannel() override;

    [[nodiscard]] int read(QByteArray *message) override;
    [[nodiscard]] int write(const QByteArray &message) override;
    [[nodiscard]] int attach(bool announces) override;
    void detach() override;

private:
    void fileChanged() override;
    void announce() override;
    [[nodiscard]] std::optional<QByteArray> contentOf(const PpsSnapshot &snapshot) const;

    PpsPath m_path;
    QByteArray m_file;
    bool m_blocking;
    PpsChannelOwner *m_owner;
    std::shared_ptr<PpsWatcher> m_watcher;
    WatchedFile *m_watched = nullptr;
    std::optional<QByteArray> m_read; // what was read last; nothing: never, or the object was gone
    bool m_unread = true;
    std::mutex m_writing;
    PpsStateWriter m_writer;
};

} // namespace oz
