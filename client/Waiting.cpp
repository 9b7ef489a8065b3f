#include <oz/client/Waiting.hpp>

#include "ControlSocket.hpp"
#include "pps/PpsMark.hpp"

#include <oz/client/DaemonError.hpp>

#include <QDeadlineTimer>

namespace oz::client {

namespace {

constexpr int PollEvery = 2; // milliseconds

} // namespace

bool waitUntil(const std::function<bool()> &isOver, std::chrono::milliseconds limit)
{
    const QDeadlineTimer deadline(limit);
    while (!isOver()) {
        if (deadline.hasExpired())
            return false;
        waitForInput({}, QDeadlineTimer(PollEvery), true);
    }
    return true;
}

QString waitUntilHandled(const QString &root, std::chrono::milliseconds limit)
{
    PpsMark mark(root);
    if (const int error = mark.set())
        throw DaemonError(DaemonError::Lost, error, qt_error_string(error));
    return waitUntil([&] { return mark.isAnswered(); }, limit) ? QString() : mark.busyText(limit);
}

} // namespace oz::client
