#pragma once

#include <oz/PpsServer.hpp>

#include <QVariantMap>

#include <functional>
#include <mutex>
#include <thread>

namespace oz::harness {

/*! The service behind a control object, on a thread of its own, so that requests which wait are answered. */
class ControlService
{
public:
    /*! Handles each request, on the service's thread. */
    using Serve = std::function<void(PpsServer &server, quint64 client)>;

    ControlService(const QString &path, const Serve &serve);
    ~ControlService();

    /*! Sends \a message. */
    [[nodiscard]] static Serve answer(const QByteArray &message);
    /*! Ends the connection. */
    static void hangUp(PpsServer &server, quint64 client) { server.disconnectClient(client); }

    /*! From the next request on. */
    void serveWith(const Serve &serve);
    /*! The attributes of the requests since the last call. */
    QList<QVariantMap> take();

private:
    void run(const QString &path, const std::function<void(bool listening)> &started);

    // The standard library's and the kernel's means throughout: the thread sanitizer sees through them.
    int m_stop;
    std::mutex m_mutex;
    Serve m_serve;
    QList<QVariantMap> m_requests;
    std::thread m_thread;
};

} // namespace oz::harness
