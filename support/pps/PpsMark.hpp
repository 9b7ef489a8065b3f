#pragma once

#include <QByteArray>
#include <QDir>
#include <QSet>
#include <QString>
#include <QStringList>

#include <chrono>

namespace oz {

/*!
 * A mark that each thread of applications under the device root of a private daemon answers once it has
 * handled everything that was published or sent to it before the mark was set; see PpsMarkAnswer.
 */
class PpsMark
{
public:
    explicit PpsMark(const QString &root) : m_folder(root + QLatin1String("/handled")) { }

    /*! Sets a new mark; 0, or the errno, which is ENOENT where the daemon is not a private one. */
    [[nodiscard]] int set();
    /*! True once every thread that is there has answered. */
    [[nodiscard]] bool isAnswered();
    /*! The threads that had not answered when isAnswered() was called last, for an error: "still busy after
     * 5 s is process 4711 (my-app)". */
    [[nodiscard]] QString busyText(std::chrono::milliseconds after) const;

private:
    QDir m_folder;
    QSet<QByteArray> m_sufficient; // the answers that count
    QStringList m_busy; // names of files
};

} // namespace oz
