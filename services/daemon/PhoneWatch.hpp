#pragma once

#include "publishing/ControlObject.hpp"

#include <QObject>
#include <QTimer>
#include <QVariantMap>

#include <functional>
#include <vector>

namespace oz::services {

/*!
 * Lets clients follow what the phone is like, by the request "phone" ("dat": "from", the "version" that they
 * know, or nothing): the answer has the newest "version" and what there is to tell. It comes when that is
 * another version, or when nothing has changed for a while.
 */
class PhoneWatch : public QObject
{
    Q_OBJECT

public:
    explicit PhoneWatch(std::function<QVariantMap()> look);

    [[nodiscard]] RequestKind request();
    /*! Something may have changed; what does so at the same time is told together. */
    void change();
    /*! Tells at once what may have changed. */
    void tell();

private:
    struct Waiting
    {
        Answer answer;
        qint64 from;
    };
    void answerWaiting(bool all);

    std::function<QVariantMap()> m_look;
    QVariantMap m_seen;
    qint64 m_version = 0;
    QTimer m_soon;
    QTimer m_patience; // of those that wait
    std::vector<Waiting> m_waiting;
};

} // namespace oz::services
