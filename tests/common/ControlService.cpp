#include "ControlService.hpp"

#include <oz/PpsObject.hpp>

#include <gtest/gtest.h>

namespace oz::testing {

ControlService::ControlService(const QString &path, const Serve &serve)
    : m_server(new PpsServer(path)), m_serve(serve)
{
    const auto onReceived = [this](const PpsServer::Client &client, const QByteArray &message) {
        QMutexLocker lock(&m_mutex);
        m_requests.append(PpsObject::decode(message).value(QStringLiteral("@")).toMap());
        const Serve current = m_serve;
        lock.unlock();
        current(*m_server, client.id);
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

ControlService::Serve ControlService::answer(const QByteArray &message)
{
    return [message](PpsServer &server, quint64 client) { server.send(client, message); };
}

void ControlService::serveWith(const Serve &serve)
{
    const QMutexLocker lock(&m_mutex);
    m_serve = serve;
}

QList<QVariantMap> ControlService::take()
{
    const QMutexLocker lock(&m_mutex);
    return std::exchange(m_requests, {});
}

} // namespace oz::testing
