#include "DeviceService.hpp"

#include <oz/DeviceRoot.hpp>

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <gtest/gtest.h>

#include <cstring>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace oz::harness {

DeviceService::DeviceService(const QString &path, const QByteArray &greeting)
    : m_file(QFile::encodeName(devicePath(path))), m_socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0))
{
    QDir().mkpath(QFileInfo(QFile::decodeName(m_file)).path());
    ::unlink(m_file.constData());
    sockaddr_un address{AF_UNIX, {}};
    EXPECT_LT(m_file.size(), qsizetype(sizeof address.sun_path));
    std::memcpy(address.sun_path, m_file.constData(), std::size_t(m_file.size()));
    EXPECT_EQ(::bind(m_socket, reinterpret_cast<const sockaddr *>(&address), sizeof address), 0);
    EXPECT_EQ(::listen(m_socket, 16), 0);
    m_thread = std::thread([this, greeting] { accept(greeting); });
}

void DeviceService::accept(const QByteArray &greeting)
{
    for (int client = 0; (client = ::accept(m_socket, nullptr, nullptr)) >= 0;) {
        if (!greeting.isEmpty())
            (void)::send(client, greeting.constData(), std::size_t(greeting.size()), MSG_NOSIGNAL);
        const std::lock_guard lock(m_mutex);
        m_clients.push_back(client);
        m_connected.notify_all();
    }
}

void DeviceService::awaitClients(std::size_t count)
{
    std::unique_lock lock(m_mutex);
    ASSERT_TRUE(m_connected.wait_for(
        lock, std::chrono::seconds(20), [this, count] { return m_clients.size() >= count; }));
}

int DeviceService::latestClient()
{
    awaitClients(1);
    const std::lock_guard lock(m_mutex);
    return m_clients.empty() ? -1 : m_clients.back();
}

QByteArray DeviceService::takeLine()
{
    QByteArray line;
    char byte = 0;
    while (::read(latestClient(), &byte, 1) == 1 && byte != '\n')
        line += byte;
    return line;
}

void DeviceService::send(const QByteArray &text)
{
    EXPECT_EQ(::send(latestClient(), text.constData(), std::size_t(text.size()), MSG_NOSIGNAL), text.size());
}

void DeviceService::stop(File file)
{
    if (!m_thread.joinable())
        return;
    if (file == File::Removed)
        ::unlink(m_file.constData());
    ::shutdown(m_socket, SHUT_RDWR);
    m_thread.join();
    ::close(m_socket);
    endConnections();
}

void DeviceService::endConnections()
{
    const std::lock_guard lock(m_mutex);
    for (const int client : m_clients)
        ::close(client);
    m_clients.clear();
}

} // namespace oz::harness
