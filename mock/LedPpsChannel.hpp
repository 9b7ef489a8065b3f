#pragma once

#include <QObject>
#include <QVariantMap>

namespace oz {
class PpsObject;
}

namespace ozmock {

extern const QString s_controlPath;
extern const QString s_statusPath;

/*!
 * The LED service's two objects for the duration of one request. It writes the maps of sendPassthrough() to
 * the control object, and emits receivePassthrough() with each later message of the status object, decoded.
 * If an object cannot be opened, the channel does nothing.
 *
 * Despite the name of its namespace, no test double: it is the only way from Led to the service, and
 * part of the library. The namespace, the signals and the two paths are those by which the platform knows the
 * channel.
 */
class LedPpsChannel : public QObject
{
    Q_OBJECT

public:
    explicit LedPpsChannel(QObject *parent);

    /*!
     * Closes the control object after the last message, because the channel itself lives until its event loop
     * deletes it, and connections are limited.
     */
    void close();

    /*! The object whose error kept the last message from being sent; null if it was sent. */
    [[nodiscard]] const oz::PpsObject *failed() const { return m_failed; }

Q_SIGNALS:
    void sendPassthrough(QVariantMap map);
    void receivePassthrough(QVariantMap map);

public Q_SLOTS:
    void onReadyRead();
    void onSend(const QVariantMap &map);

private:
    oz::PpsObject *m_control = nullptr;
    oz::PpsObject *m_status = nullptr;
    const oz::PpsObject *m_failed = nullptr;
};

} // namespace ozmock
