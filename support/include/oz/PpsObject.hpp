#pragma once

#include <oz/OzSupportGlobal.hpp>
#include <oz/PpsOpenMode.hpp>

#include <QByteArray>
#include <QObject>
#include <QString>
#include <QVariantMap>

#include <memory>

namespace oz {

class PpsObjectPrivate;

/*!
 * One object of the publish/subscribe tree, as its clients see it.
 *
 * The path is a device path ("/pps/..."), looked up under deviceRoot() when the object is opened, with
 * options after a "?", joined by ",":
 * - "f=a+b": only these attributes are delivered, and only a change of one of them notifies; of a served
 * object every message notifies;
 * - "delta": after the first full read, each read gives what changed since this object's last read ("-name"
 * for an attribute that is gone), and the header line alone where nothing did; the messages of a served
 * object come whole;
 * - "wait": read() waits for the next message.
 *
 * At the path lies one of two kinds of object:
 * - a state object, a regular file, holds what was published last. read() gives the whole object, headed by
 * its name, whether or not it changed; write() merges attributes into it.
 * - a served object, a socket on which a service listens. Each write() is one message to the service, each
 * read() the next message that the service sent to this client.
 *
 * An open served object outlives its service: where that goes away, the object connects again when another
 * takes its place. Until graceTime() is over the object's user is told nothing: a read finds no message, and
 * up to 64 messages of 64 KiB in all are kept, to be sent to the service that comes. After it a read fails
 * with ECONNRESET (readyRead() tells of it), a write with EPIPE, and what was kept is lost, with a warning;
 * the object still comes back when a service does. An answer that will not come any more is told at once: an
 * object that reads, and was owed one, reads ECONNRESET once. With "wait", a read or write that finds the
 * service away waits until the grace time is over; a read that waits for a message ends with ECONNRESET when
 * the service goes away. A service that lives and has ended the connection stays gone. Closing the object
 * drops what was kept.
 *
 * Errors are errno values. Open fails with ENOENT where there is nothing, EACCES where the file's mode
 * forbids it, ECONNREFUSED where the service of a served object is gone, EINVAL for a path or option that is
 * none, EISDIR for a directory. A read fails with ENOENT while a state object is removed, EAGAIN where a
 * served object has no message, ECONNRESET where its service went away (also while it waits); reading or
 * writing against the open mode, or a closed object, is EBADF; a message that is malformed, names another
 * object or is empty is EINVAL; one over 1 MiB, or too large for the socket (at least 200 KB fit), is
 * EMSGSIZE; a service that does not take messages is EAGAIN. A wait for the service of a served object, for
 * a message or for room for one, fails with ETIMEDOUT after waitLimit().
 *
 * An instance belongs to the thread that it lives on, like any QObject; different instances are independent.
 * Other threads may write to an open served object, one at a time.
 * It notifies in threads with an event loop, from when there is one; in others it can be opened, read and
 * written. Where the folder of a state object cannot be watched, a warning of the category "oz.support" says
 * so once; its changes are then looked for from time to time, and it is watched as soon as it can be.
 */
class OZ_SUPPORT_EXPORT PpsObject : public QObject
{
    Q_OBJECT

public:
    /*! Binds to \a path without opening it. */
    explicit PpsObject(const QString &path, QObject *parent = nullptr);
    ~PpsObject() override;

    /*! The path as given, with its options. */
    [[nodiscard]] QString path() const;

    /*! Opens the object, closing it first where it is open; false on failure, see error(). */
    bool open(oz::PpsOpenMode::Types mode);
    /*! Has read() wait for the next message, as with the option "wait". To be called before open(). */
    void setBlocking(bool blocking);
    /*! True if open() has succeeded, and close() has not been called since. */
    [[nodiscard]] bool isOpen() const;
    /*! Closes the object; nothing is notified any more. */
    void close();

    /*! The next message; \a ok, where given, tells whether there is one. */
    [[nodiscard]] QByteArray read(bool *ok = nullptr);
    /*! Writes one encoded message; false on failure, see error(). */
    bool write(const QByteArray &data);

    /*! The errno of the last failure since open(); 0 where there was none. */
    [[nodiscard]] int error() const;
    /*! error() as text; empty for 0. */
    [[nodiscard]] QString errorString() const;

    /*!
     * The map of one message: one key, "@" and the object's name, whose value is the map of attributes. \a ok
     * is false, and the map empty, where the text is malformed. See PpsText for the text form. Any thread may
     * call it.
     */
    [[nodiscard]] static QVariantMap decode(const QByteArray &data, bool *ok = nullptr);
    /*! A flat map of attributes as one message; \a ok is false where a name or value has no text form. */
    [[nodiscard]] static QByteArray encode(const QVariantMap &attributes, bool *ok = nullptr);

Q_SIGNALS:
    /*!
     * A message waits that this object has not read: the content that was there at open, where nothing read
     * it until the event loop runs; a change, including the removal of the object; a message or the end of a
     * service.
     */
    void readyRead();
    /*! The service of a served object is back: another one, which knows only what is written to it from now
     * on, and what was kept for it. */
    void serviceReturned();

protected:
    /*! For the object itself. */
    bool event(QEvent *event) override;
    /*! Begins to watch with the first receiver of readyRead(). */
    void connectNotify(const QMetaMethod &signal) override;

private:
    friend class PpsObjectPrivate;
    std::unique_ptr<PpsObjectPrivate> d;
};

} // namespace oz
