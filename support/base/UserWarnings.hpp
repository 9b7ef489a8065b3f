#pragma once

#include <QDeadlineTimer>
#include <QObject>
#include <QString>
#include <QTimer>

#include <map>
#include <sys/types.h>
#include <utility>

namespace oz {

/*! Warnings about what users do: each once a minute, and how often it was left out since, so that no user can
 * fill the log. */
class UserWarnings : public QObject
{
public:
    /*! The warnings of the calling thread. */
    [[nodiscard]] static UserWarnings &ofThisThread();

    /*! Logs "user UID TEXT"; \a text holds no figure that changes from one time to the next. */
    void warn(uid_t user, const QString &text);

private:
    struct Given
    {
        QDeadlineTimer end; // when its minute is over
        int leftOut = 0;
    };

    UserWarnings();
    void sumUp();

    std::map<std::pair<uid_t, QString>, Given> m_given; // those of the last minute
    QTimer m_next;
};

} // namespace oz
