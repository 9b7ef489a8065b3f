#pragma once

#include <oz/client/DaemonError.hpp>

#include <QObject>
#include <QString>
#include <QVariant>

#include <chrono>
#include <functional>
#include <optional>

namespace oz::client {

/*!
 * Sends requests to the control object of a daemon. Each request has a connection of its own, so that one can
 * be answered while another waits. Any thread may use an instance.
 */
class DaemonClient
{
public:
    /*! Within which the daemon answers what it answers at once, also on a machine that is busy. */
    static constexpr std::chrono::seconds AnswerLimit{20};
    /*! How a call waits. */
    struct Wait
    {
        std::chrono::milliseconds limit = AnswerLimit;
        bool runsEventLoop = false; //!< of the calling thread, where it has one
    };
    /*! Receives the "dat" of the answer, or the error. */
    using Answered = std::function<void(const QVariant &data, const std::optional<DaemonError> &error)>;

    /*! Speaks to the daemon under \a root; without one, to that under deviceRoot() at the time of a call. */
    explicit DaemonClient(const QString &root = {}) : m_root(root) { }

    /*! Sends a request with its "dat" and waits for the answer, whose "dat" it returns; throws DaemonError.
     */
    QVariant ask(const QString &request, const QVariant &data, const Wait &wait) const;
    QVariant ask(const QString &request, const QVariant &data = {}) const { return ask(request, data, {}); }

    /*! Sends a request without waiting. The event loop calls \a answered once, later, unless \a context is
     * destroyed before. */
    void askLater(
        const QString &request, const QVariant &data, QObject *context, const Answered &answered) const;

    /*! Calls \a ended from the event loop when the daemon ends, or where there is none, unless \a context is
     * destroyed before. */
    void watchEnd(QObject *context, const std::function<void()> &ended) const;

    /*!
     * Calls \a look at once and after each change of the daemon's state object at \a path, until it returns
     * true. Returns false where it has not within the limit; throws DaemonError where the daemon ends.
     */
    [[nodiscard]] bool follow(const QString &path, const Wait &wait, const std::function<bool()> &look) const;

    /*! True if a daemon has published everything, also one of another user. */
    [[nodiscard]] bool isReady() const;
    /*! Waits for that. Returns false after \a limit, or as soon as \a goOn, which is called many times a
     * second, returns false. */
    [[nodiscard]] bool waitUntilReady(
        std::chrono::milliseconds limit, const std::function<bool()> &goOn = [] { return true; }) const;

private:
    [[nodiscard]] QString fileOf(const QString &path) const;

    QString m_root;
};

} // namespace oz::client
