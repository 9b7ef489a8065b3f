#pragma once

#include "core/Mishaps.hpp"
#include "core/ServedObject.hpp"

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

/*!
 * A control object of a service: requests are "msg", "id" and "dat", answers name the request in "res" and
 * "id", and bring "dat", or "err" with "errstr". A message that is none of this is answered with EINVAL, and
 * harms nobody.
 */
class ControlObject : public ServedObject
{
public:
    /*! Answers a request, now, or with answer() later where it returns nothing. */
    using Handler = std::function<std::optional<Reply>(const Request &request)>;

    /*! What goes wrong with the request that has come. */
    using MishapOf = std::function<std::optional<Mishap>(const Request &request)>;

    explicit ControlObject(const QString &path, Handler handler, MishapOf mishap = {});

    /*! Answers a request that its handler left open. */
    void answer(const Request &request, const Reply &reply);

private:
    void onMessage(
        const PpsServer::Client &client, const QVariantMap &attributes, const QString &malformed) override;
    void handle(const Request &request);
    void handleLater(int milliseconds, const Request &request);
    void suffer(const Mishap &mishap, const Request &request);

    Handler m_handler;
    MishapOf m_mishap;
};

} // namespace oz::services
