#pragma once

#include "base/UniqueFd.hpp"
#include "events/EventSources.hpp"
#include "sockets/ServiceLink.hpp"

#include <QByteArray>
#include <QByteArrayList>
#include <QFile>
#include <QString>

#include <map>
#include <memory>
#include <mutex>
#include <sys/types.h>

namespace oz {

class DeviceReturn;

/*! A device that this process has open. Its descriptor outlives the service behind it. */
struct OpenDevice
{
    OpenDevice(const QString &deviceRoot, const QString &devicePath)
        : root(deviceRoot), path(devicePath), link(QFile::encodeName(root + path), SOCK_STREAM)
    {
    }

    QString root; //!< the device root when it was opened
    QString path; //!< below it
    ServiceLink link; //!< while it is Away, the bridge stands behind the descriptor
    bool closeOnExec = false;
    int fd = -1; //!< none once it is closed
    bool owesAnswer = false;
    QByteArrayList said; //!< the client's lines, each once, to be said again to the next service
    QByteArray line; //!< the beginning of an incomplete line
    UniqueFd bridge; //!< the other end of what hides the end of the service from the client
    DeviceReturn *comingBack = nullptr; //!< lives on the platform's own thread

    /*! Remembers what the client has written. */
    void note(QByteArrayView text);
    /*! Puts \a socket behind the descriptor; what is armed for it stays. 0 or an errno. */
    [[nodiscard]] int putBehind(UniqueFd socket);
};

/*! The open devices by their descriptors. The functions give 0 or an errno; any thread may call them. */
class OpenDevices
{
public:
    [[nodiscard]] static OpenDevices &instance();

    [[nodiscard]] int open(const QString &path, bool closeOnExec, int *fd);
    [[nodiscard]] int close(int fd);
    /*! Writes to the service, or notes what to say to the next one. */
    [[nodiscard]] int write(int fd, QByteArrayView text, std::size_t *written);
    /*! True once after each write: the device owes its client an answer. */
    [[nodiscard]] bool takeOwed(int fd);
    /*! The state of \a fd, whose other side is gone. */
    [[nodiscard]] EventSources::HangUp judge(int fd);

private:
    friend class DeviceReturn;

    OpenDevices();
    [[nodiscard]] EventSources::HangUp judgeLocked(int fd);
    [[nodiscard]] EventSources::HangUp lose(const std::shared_ptr<OpenDevice> &device);

    std::mutex m_mutex;
    std::map<int, std::shared_ptr<OpenDevice>> m_devices;
};

} // namespace oz
