#pragma once

#include <oz/PpsServer.hpp>

#include <QMutex>
#include <QPointer>
#include <QThread>
#include <QVariantMap>

#include <functional>

namespace oz::testing {

/*! The service behind a control object, on a thread of its own, so that requests which wait are answered. */
class ControlService
{
public:
    /*! Called for each request, on the service's thread. */
    using Serve = std::function<void(PpsServer &server, quint64 client, const QVariantMap &request)>;

    ControlService(const QString &path, Serve serve);
    ~ControlService();

    /*! The attributes of the requests since the last call. */
    QList<QVariantMap> take();

private:
    QThread m_thread;
    QPointer<PpsServer> m_server;
    QMutex m_mutex;
    QList<QVariantMap> m_requests;
};

} // namespace oz::testing
