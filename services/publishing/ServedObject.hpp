#pragma once

#include "publishing/Tree.hpp"

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

/*! An object on which a service takes the messages of its clients. One that is longer than the limit is
 * malformed: it is answered with EINVAL, and the connection stays. */
class ServedObject : public QObject, public TreeObject
{
    Q_OBJECT

public:
    /*! How many bytes a message may have unless setMessageLimit() was called: no request of an application
     * comes near it, and decoding one that has as many takes a millisecond. */
    static constexpr qsizetype UsualMessageLimit = 16 * 1024;
    /*! For an object that no stranger can open. */
    void setMessageLimit(qsizetype bytes);

    /*! Puts the object into the tree, with the file mode \a mode. */
    void start(mode_t mode);

Q_SIGNALS:
    void clientCame(const oz::PpsServer::Client &client);
    void clientGone(const oz::PpsServer::Client &client);

protected:
    ServedObject(Tree &tree, const QString &path);

    /*! A client's message: its attributes, and in \a malformed why it means nothing; there may be some of the
     * attributes then. */
    virtual void onMessage(
        const PpsServer::Client &client, const QVariantMap &attributes, const QString &malformed) = 0;
    [[nodiscard]] PpsServer &server() { return m_server; }
    /*! The text of the message that onMessage() is about. */
    [[nodiscard]] const QByteArray &lastMessage() const { return m_lastMessage; }

private:
    Failure put() override;

    void refuse(const PpsServer::Client &client, const QByteArray &beginning);

    PpsServer m_server;
    qsizetype m_messageLimit = UsualMessageLimit;
    QByteArray m_lastMessage;
    mode_t m_mode = 0;
};

} // namespace oz::services
