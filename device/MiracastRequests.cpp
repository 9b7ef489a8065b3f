#include "MiracastRequests.hpp"

#include "ControlErrors.hpp"

#include <oz/PpsObject.hpp>

#include <QDateTime>

namespace oz::device {

namespace {

const QString ControlPpsPath = QStringLiteral("/pps/services/miracast/control");

constexpr LogText ControlOpenFailed{
    "MiracastManager::sendCommand - Unable to connect to Miracast service. (", LogText::ErrorStringJoined};

// The message with its values in their places. What is in a value stays as it is, "%1" too.
QString filled(const char *message, const QStringList &values)
{
    QString text;
    for (const char *next = message; *next; ++next) {
        if (*next == '%')
            text += values.value(*++next - '1');
        else
            text += QLatin1Char(*next);
    }
    return text;
}

} // namespace

QString MiracastRequests::getRequestToken(const QString &prefix)
{
    return prefix + QString::number(quint64(QDateTime::currentMSecsSinceEpoch()));
}

void MiracastRequests::send(const MiracastRequest &request, const QString &first, const QString &second)
{
    const QString token = getRequestToken(QLatin1String(request.prefix));
    sendCommand(token, filled(request.message, {token, first, second}),
        filled(request.message, {token, first, request.hasSecret ? QStringLiteral("...") : second}));
}

// Logged is what a warning may say of the message.
void MiracastRequests::sendCommand(const QString &token, const QString &message, const QString &logged)
{
    if (!m_ready)
        return;
    PpsObject control(ControlPpsPath);
    if (!openOrLog(&control, PpsOpenMode::Publish, ControlOpenFailed)) {
        ControlErrors::noteFailure(control);
        return;
    }
    if (control.write(message.toUtf8())) {
        ControlErrors::noteSuccess();
        m_pending.append(token);
    } else {
        ControlErrors::noteFailure(control);
        qCWarning(logDevice) << QString(
            QLatin1String("MiracastManager::sendCommand - Unable to write message: ") + logged);
    }
    control.close();
}

} // namespace oz::device
