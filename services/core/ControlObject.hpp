#pragma once

#include "core/Mishaps.hpp"

#include <oz/PpsServer.hpp>

#include <QObject>
#include <QVariantMap>

#include <functional>
#include <optional>

namespace oz::services {

/*! One request to a control object. */
struct Request
{
    PpsServer::Client client;
    QString message; //!< "msg"
    QVariant id; //!< "id", as the client chose it
    QVariant data; //!< "dat"
};

/*! The answer to a request: data, or an error that is not 0. */
struct Reply
{
    QVariant data;
    int error = 0; //!< an errno
    QString errorText;

    static Reply failure(int error, const QString &text) { return {{}, error, text}; }
};

/*!
 * A control object of a service: requests are "msg", "id" and "dat", answers name the request in "res" and
 * "id", and bring "dat", or "err" with "errstr". A message that is none of this is answered with EINVAL, and
 * harms nobody.
 */
class ControlObject : public QObject
{
    Q_OBJECT

public:
    /*! Answers a request, now, or with answer() later where it returns nothing. */
    using Handler = std::function<std::optional<Reply>(const Request &request)>;

    /*! What goes wrong with the request that has come. */
    using MishapOf = std::function<std::optional<Mishap>(const Request &request)>;

    explicit ControlObject(const QString &path, Handler handler, MishapOf mishap = {});

    /*! Puts the object into the tree; see Startup::fail() for where that fails. */
    void start(mode_t mode);
    /*! Answers a request that its handler left open. */
    void answer(const Request &request, const Reply &reply);

Q_SIGNALS:
    void clientGone(const oz::PpsServer::Client &client);

private:
    void onReceived(const PpsServer::Client &client, const QByteArray &message);
    void handle(const Request &request);
    void suffer(const Mishap &mishap, const Request &request);

    PpsServer m_server;
    Handler m_handler;
    MishapOf m_mishap;
};

} // namespace oz::services
