#pragma once

#include "publishing/Faults.hpp"
#include "publishing/ServedObject.hpp"
#include "source/Source.hpp"

#include <functional>
#include <map>
#include <memory>

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
 * The way back to who sent a request, to be called once, now or later; calls after the first do nothing.
 * Where it is forgotten, the request is answered with EIO, so that nobody waits for ever.
 */
class Answer
{
public:
    /*! Sends the reply, or ends the request without one. */
    using End = std::function<void(const Reply *reply)>;

    explicit Answer(End end);
    void operator()(const Reply &reply) const;
    /*! Ends the request without an answer. */
    void withhold() const;
    /*! As the outcome of a source's request; \a attribute names its text among the data. */
    [[nodiscard]] Done toDone(const QString &attribute = {}) const;

private:
    struct State;
    std::shared_ptr<State> m_state;
};

/*! One kind of request to a control object: its name, and what it does. */
struct RequestKind
{
    enum class For {
        Everybody, //!< who can open the object
        Trusted, //!< what it does is for everybody: see Tree::trustedGroup()
    };

    QString message; //!< "msg"
    QString word; //!< in `ozdevice sim FACILITY fail-next`; empty where it has none
    std::function<void(const Request &request, const Answer &answer)> handle;
    For whom = For::Everybody;
};

/*! The requests that a control object takes. */
using RequestTable = std::vector<RequestKind>;

/*! The reason why \a client may not make a request of the kind \a kind; empty where it may. */
[[nodiscard]] QString refusalOf(const Tree &tree, const RequestKind &kind, const PpsServer::Client &client);

/*!
 * A control object of a service: requests are "msg", "id" and "dat", answers name the request in "res" and
 * "id", and bring "dat", or "err" with "errstr". A message that is none of this is answered with EINVAL, and
 * harms nobody. While the source is absent, each request is answered with ENODEV and the reason.
 */
class ControlObject final : public ServedObject
{
public:
    /*! Without a \a source, requests are always taken. */
    ControlObject(Tree &tree, const QString &path, RequestTable requests, const Source *source = nullptr,
        const FaultErrors &errors = {});

    /*! The faults that its requests can be told to have. */
    [[nodiscard]] Faults &faults() { return m_faults; }
    /*! Keeps the connection of a client, which has something under way, until release() was called as often.
     */
    void hold(quint64 client) { server().hold(client); }
    void release(quint64 client) { server().release(client); }

private:
    void onMessage(
        const PpsServer::Client &client, const QVariantMap &attributes, const QString &malformed) override;
    [[nodiscard]] Reply refusal(const Request &request, const RequestKind *kind) const;
    void suffer(const Fault &fault, const Request &request, const Answer &answer);
    void handle(const Request &request, const Answer &answer);
    void handleLater(int milliseconds, const Request &request, const Answer &answer);
    [[nodiscard]] const RequestKind *kindOf(const QString &message) const;
    [[nodiscard]] Answer answerTo(const Request &request);
    void send(const Request &request, const Reply &reply);

    RequestTable m_requests;
    const Source *m_source;
    Faults m_faults;
    std::map<uid_t, int> m_underWay; // requests that are not answered, by user
};

} // namespace oz::services
