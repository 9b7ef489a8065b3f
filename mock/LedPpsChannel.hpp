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
 * The LED service's two objects for the time of one request: what sendPassthrough() brings is written to the
 * control object, and receivePassthrough() brings each message that the status object has from then on,
 * decoded. Where one of them does not open, the channel is silent.
 */
class LedPpsChannel : public QObject
{
    Q_OBJECT

public:
    explicit LedPpsChannel(QObject *parent);

    /*!
     * Closes the control object once nothing is to be sent any more: a channel lives on until its event loop
     * deletes it, and a connection is too dear for that.
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
