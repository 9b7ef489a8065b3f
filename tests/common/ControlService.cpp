#include "ControlService.hpp"

#include <oz/PpsObject.hpp>

#include <gtest/gtest.h>

namespace oz::testing {

ControlService::ControlService(const QString &path, Serve serve) : m_server(new PpsServer(path))
{
    const auto onReceived = [this, serve](const PpsServer::Client &client, const QByteArray &message) {
        const QVariantMap request = PpsObject::decode(message).value(QStringLiteral("@")).toMap();
        {
            const QMutexLocker lock(&m_mutex);
            m_requests.append(request);
        }
        serve(*m_server, client.id, request);
    };
    QObject::connect(m_server, &PpsServer::received, m_server, onReceived);
    QObject::connect(&m_thread, &QThread::finished, m_server, &QObject::deleteLater);
    m_server->moveToThread(&m_thread);
    m_thread.start();
    bool listening = false;
    QMetaObject::invokeMethod(
        m_server, [&] { listening = m_server->listen(); }, Qt::BlockingQueuedConnection);
    EXPECT_TRUE(listening) << m_server->errorString().toStdString();
}

ControlService::~ControlService()
{
    m_thread.quit();
    m_thread.wait();
}

QList<QVariantMap> ControlService::take()
{
    const QMutexLocker lock(&m_mutex);
    return std::exchange(m_requests, {});
}

} // namespace oz::testing
