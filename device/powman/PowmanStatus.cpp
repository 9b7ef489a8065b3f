#include "PowmanStatus.hpp"

#include <oz/DeviceFile.hpp>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>
#include <pthread.h>
#include <string>
#include <string_view>

namespace oz::device {

namespace {

constexpr const char *DevicePath = "/dev/power/mgr";
constexpr int OpenFlags = DeviceOpen::ReadWrite | DeviceOpen::CloseOnExec;
constexpr std::string_view ValuePrefix = "status";
constexpr std::size_t MostPerRead = 255;

constexpr int DefaultSignal = 57;
constexpr short DefaultSignalCode = -6;
constexpr int NoSuchProcess = 3;
constexpr int NotDeliverable = 89;

pthread_mutex_t s_listMutex = PTHREAD_MUTEX_INITIALIZER;
PowmanStatus *s_head = nullptr;

} // namespace

// One allocation with its name behind it.
struct PowmanStatus
{
    PowmanStatus *next;
    PowmanStatus *prev;
    int fd;
    char *value;
    char *name;
};

namespace {

void link(PowmanStatus *status)
{
    ::pthread_mutex_lock(&s_listMutex);
    status->next = s_head;
    status->prev = nullptr;
    if (s_head)
        s_head->prev = status;
    s_head = status;
    ::pthread_mutex_unlock(&s_listMutex);
}

void unlink(const PowmanStatus *status)
{
    ::pthread_mutex_lock(&s_listMutex);
    if (status->next)
        status->next->prev = status->prev;
    (status->prev ? status->prev->next : s_head) = status->next;
    ::pthread_mutex_unlock(&s_listMutex);
}

// Takes over the last complete line that brings a value; false where there is no memory for it.
bool takeValue(PowmanStatus *status, std::string_view text)
{
    for (std::size_t end = text.find('\n'); end != std::string_view::npos; end = text.find('\n')) {
        const std::string_view line = text.substr(0, end);
        text.remove_prefix(end + 1);
        if (!line.starts_with(ValuePrefix))
            continue;
        const std::string_view rest = line.substr(ValuePrefix.size());
        char *copy = ::strndup(rest.data(), rest.size());
        if (!copy)
            return false;
        std::free(std::exchange(status->value, copy));
    }
    return true;
}

} // namespace

PowmanStatus *powman_status_create(const char *name)
{
    const std::size_t nameSize = std::strlen(name) + 1;
    void *memory = std::malloc(sizeof(PowmanStatus) + nameSize);
    if (!memory)
        return nullptr;
    auto *status = new (memory)
        PowmanStatus{nullptr, nullptr, -1, nullptr, static_cast<char *>(memory) + sizeof(PowmanStatus)};
    std::memcpy(status->name, name, nameSize);
    link(status);

    const auto giveUp = [&] {
        const int error = errno;
        (void)powman_status_destroy(status);
        errno = error;
        return nullptr;
    };
    status->fd = openDevice(DevicePath, OpenFlags);
    if (status->fd < 0)
        return giveUp();
    const std::string line = "STATUS " + std::string(name) + "\n";
    if (writeDevice(status->fd, line.data(), line.size()) < ssize_t(line.size()))
        return giveUp();
    status->value = ::strdup("");
    return status->value ? status : giveUp();
}

int powman_status_destroy(PowmanStatus *status)
{
    const int result = status->fd != -1 && closeDevice(status->fd) < 0 ? errno : 0;
    unlink(status);
    std::free(status->value);
    std::free(status);
    return result;
}

int powman_status_value(PowmanStatus *status, std::size_t size, char *buffer)
{
    char text[MostPerRead + 1];
    const ssize_t got = readDevice(status->fd, text, MostPerRead);
    if (got < 0)
        return -errno;
    text[got] = '\0';
    if (!takeValue(status, {text, std::size_t(got)}))
        return -ENOMEM;
    const std::size_t length = std::strlen(status->value);
    if (buffer)
        std::memcpy(buffer, status->value, std::min(length + 1, size));
    return int(length);
}

int powman_status_notify(PowmanStatus *status, const sigevent *event)
{
    sigevent standard;
    standard.notify = EventKind::SignalWithCode;
    standard.signo = DefaultSignal;
    standard.code = DefaultSignalCode;
    if (!event)
        event = &standard;
    const int conditions = ionotify(status->fd, NotifyActionPollArm, NotifyConditionInput, event);
    if (conditions < 0)
        return errno;
    if (conditions & NotifyConditionInput)
        (void)_powman_deliver_event(event);
    return 0;
}

int _powman_deliver_event(const sigevent *event)
{
    const int result = MsgDeliverEvent_r(0, event);
    if (result != NoSuchProcess)
        return result;
    return event->notify == EventKind::Pulse
        ? MsgSendPulse_r(event->coid, event->priority, event->code, event->value.sival_int)
        : NotDeliverable;
}

} // namespace oz::device
