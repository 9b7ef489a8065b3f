#include "ControlService.hpp"

#include <oz/PpsObject.hpp>

#include <QEventLoop>
#include <QSocketNotifier>

#include <gtest/gtest.h>

#include <future>
#include <sys/eventfd.h>
#include <unistd.h>

namespace oz::harness {

ControlService::ControlService(const QString &path, const Serve &serve)
    : m_stop(::eventfd(0, EFD_CLOEXEC)), m_serve(serve)
{
    std::promise<bool> listening;
    m_thread = std::thread([&] { run(path, [&](bool started) { listening.set_value(started); }); });
    EXPECT_TRUE(listening.get_future().get());
}

ControlService::~ControlService()
{
    ::eventfd_write(m_stop, 1);
    m_thread.join();
    ::close(m_stop);
}

void ControlService::run(const QString &path, const std::function<void(bool listening)> &started)
{
    QEventLoop loop;
    QSocketNotifier stop(m_stop, QSocketNotifier::Read);
    QObject::connect(&stop, &QSocketNotifier::activated, &loop, &QEventLoop::quit);
    // Destroyed by the event loop where the service dies early.
    auto *server = new PpsServer(path, &loop);
    const auto onReceived = [&](const PpsServer::Client &client, const QByteArray &message) {
        std::unique_lock lock(m_mutex);
        m_requests.append(PpsObject::decode(message).value(QStringLiteral("@")).toMap());
        const Serve serve = m_serve;
        lock.unlock();
        serve(*server, client.id);
    };
    QObject::connect(server, &PpsServer::received, server, onReceived);
    started(server->listen());
    loop.exec();
}

ControlService::Serve ControlService::answer(const QByteArray &message)
{
    return [message](PpsServer &server, quint64 client) { server.send(client, message); };
}

void ControlService::serveWith(const Serve &serve)
{
    const std::lock_guard lock(m_mutex);
    m_serve = serve;
}

QList<QVariantMap> ControlService::take()
{
    const std::lock_guard lock(m_mutex);
    return std::exchange(m_requests, {});
}

} // namespace oz::harness
