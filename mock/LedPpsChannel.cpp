#include "LedPpsChannel.hpp"

#include <oz/PpsObject.hpp>

namespace ozmock {

using oz::PpsObject;
using oz::PpsOpenMode;

const QString s_controlPath = QStringLiteral("/pps/services/led/control");
const QString s_statusPath = QStringLiteral("/pps/services/led/status");

LedPpsChannel::LedPpsChannel(QObject *parent)
    : QObject(parent), m_control(new PpsObject(s_controlPath, this)),
      m_status(new PpsObject(s_statusPath, this))
{
    if (!m_control->open(PpsOpenMode::Publish)) {
        m_failed = m_control;
        return;
    }
    if (!m_status->open(PpsOpenMode::Subscribe)) {
        m_failed = m_status;
        return;
    }
    // Skip the present status, which does not result from this request.
    (void)m_status->read();
    connect(m_status, &PpsObject::readyRead, this, &LedPpsChannel::onReadyRead);
    connect(this, &LedPpsChannel::sendPassthrough, this, &LedPpsChannel::onSend);
}

void LedPpsChannel::close()
{
    m_control->close();
}

void LedPpsChannel::onReadyRead()
{
    bool ok = false;
    const QByteArray data = m_status->read(&ok);
    if (ok)
        Q_EMIT receivePassthrough(PpsObject::decode(data));
}

void LedPpsChannel::onSend(const QVariantMap &map)
{
    m_failed = m_control->write(PpsObject::encode(map)) ? nullptr : m_control;
}

} // namespace ozmock
