#pragma once

#include <oz/PpsServer.hpp>

#include <QObject>
#include <QVariantMap>

#include <sys/types.h>

namespace oz::services {

/*! The answer to a request: data, or an error that is not 0. */
struct Reply
{
    QVariant data;
    int error = 0; //!< an errno
    QString errorText;

    static Reply failure(int error, const QString &text) { return {{}, error, text}; }
    /*! Adds "err" and "errstr" where the request failed. */
    void addErrorTo(QVariantMap *attributes) const;
};

/*! An object on which a service takes the messages of its clients. */
class ServedObject : public QObject
{
    Q_OBJECT

public:
    /*! Puts the object into the tree; see Startup::fail() for where that fails. */
    void start(mode_t mode);

Q_SIGNALS:
    void clientGone(const oz::PpsServer::Client &client);

protected:
    explicit ServedObject(const QString &path);

    /*! A client's message: its attributes, or none and in \a malformed why it means nothing. */
    virtual void onMessage(
        const PpsServer::Client &client, const QVariantMap &attributes, const QString &malformed) = 0;
    [[nodiscard]] PpsServer &server() { return m_server; }

private:
    PpsServer m_server;
};

} // namespace oz::services
