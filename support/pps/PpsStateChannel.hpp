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
    void attach(bool announces) override;
    void detach() override;

private:
    void fileChanged() override;
    void announce() override;
    [[nodiscard]] const PpsSnapshot &look(PpsSnapshot *own) const;
    [[nodiscard]] bool isRead(const std::optional<QByteArray> &content) const;
    [[nodiscard]] std::optional<QByteArray> contentOf(const PpsSnapshot &snapshot) const;

    PpsPath m_path;
    QByteArray m_file;
    bool m_blocking;
    PpsChannelOwner *m_owner;
    std::shared_ptr<PpsWatcher> m_watcher;
    WatchedFile *m_watched = nullptr;
    std::optional<QByteArray>
        m_read; // the last content read; unset before the first read, and while the object is gone
    std::optional<QByteArray> m_base; // the last content that decoded, from which the next delta counts
    bool m_unread = true;
    quint64 m_newsTurn = 0; // the watcher's turn in which there was something to announce
    std::mutex m_writing;
    PpsStateWriter m_writer;
};

} // namespace oz
