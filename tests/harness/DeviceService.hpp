#pragma once

#include <QByteArray>
#include <QString>

#include <condition_variable>
#include <mutex>
#include <thread>
#include <vector>

namespace oz::harness {

/*! A device that is served on a thread of its own, byte by byte as the test says. */
class DeviceService
{
public:
    /*! Serves \a path; each client is sent \a greeting first. */
    explicit DeviceService(const QString &path, const QByteArray &greeting = {});
    ~DeviceService() { stop(); }

    /*! The fate of the socket's file when the service ends. */
    enum class File { Removed, Left };

    /*! Waits until so many clients have connected. */
    void awaitClients(std::size_t count);
    /*! The line that the client which connected last has written. */
    [[nodiscard]] QByteArray takeLine();
    /*! Sends \a text to that client. */
    void send(const QByteArray &text);
    /*! Ends all connections, and goes on to listen. */
    void endConnections();
    /*! Ends the service, with all its connections; one that is killed leaves its file. */
    void stop(File file = File::Removed);

private:
    void accept(const QByteArray &greeting);
    [[nodiscard]] int latestClient();

    QByteArray m_file;
    int m_socket = -1;
    std::mutex m_mutex;
    std::condition_variable m_connected;
    std::vector<int> m_clients;
    std::thread m_thread;
};

} // namespace oz::harness
