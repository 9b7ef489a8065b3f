#pragma once

#include "led/Led.hpp"
#include "publishing/WarnOnce.hpp"

#include <QTimer>

#include <sys/types.h>
#include <vector>

namespace oz::services {

/*! A request to let the LED flash. */
struct LedRequest
{
    static constexpr int UntilCancelled = -1;

    quint64 client = 0; //!< the connection that it came on; 0 for one of before a restart
    QString id; //!< as the client chose it, for this connection
    qint64 process = 0;
    qulonglong started = 0; //!< when the process was, in the kernel's ticks; 0 where that is not known
    uid_t user = 0;
    QString color;
    LedState::Elements elements;
    int count = UntilCancelled;
    int shown = 0; //!< flashes so far

    /*! True if a client calls it so: by its connection, or by its process where a restart lies between. */
    [[nodiscard]] bool isSameAs(const LedRequest &other) const
    {
        const bool sameClient = client && other.client ? client == other.client : process == other.process;
        return sameClient && id == other.id;
    }
    [[nodiscard]] bool isDone() const { return count != UntilCancelled && shown >= count; }
};

/*!
 * Lets the LED flash as it is requested. The newest request has it; the one before goes on, with what it had
 * left, when that is done or cancelled. Between any two flashes the LED is off for a while, so that each of
 * them is seen.
 */
class LedRequests : public QObject
{
    Q_OBJECT

public:
    explicit LedRequests(LedSource &source);

    /*! Goes on with requests of before a restart, the newest last, which no connection has yet. */
    void restore(const std::vector<LedRequest> &requests);

    /*! Begins \a request; one of the same client and id ends. */
    void begin(const LedRequest &request);
    /*! Ends the request of the same client and id; false where there is none. The last flash of one that is
     * done is not cut short. */
    bool cancel(const LedRequest &request);
    /*! Ends all requests that \a isGone picks, whose clients are gone. */
    void forget(const std::function<bool(const LedRequest &)> &isGone);
    /*! How many requests of the same user are not done, beside one that \a request would replace. */
    [[nodiscard]] int countBeside(const LedRequest &request) const;

    /*! The requests that are not done, the newest last. */
    [[nodiscard]] const std::vector<LedRequest> &current() const { return m_current; }
    /*! The one that ended last, and how: "done", "cancelled", "replaced" or "client gone". */
    [[nodiscard]] const std::optional<std::pair<LedRequest, QString>> &last() const { return m_last; }
    /*! All flashes so far. */
    [[nodiscard]] quint64 flashes() const { return m_flashes; }

Q_SIGNALS:
    void changed();

private:
    enum Phase { Ready, Lit, Dark };

    bool end(const std::function<bool(const LedRequest &)> &isMeant, const QString &how);
    void light(const LedState::Elements &elements);
    void darken();
    void advance();
    [[nodiscard]] LedState times() const;

    LedSource &m_source;
    WarnOnce m_warn;
    std::vector<LedRequest> m_current;
    std::optional<std::pair<LedRequest, QString>> m_last;
    quint64 m_flashes = 0;
    Phase m_phase = Ready;
    bool m_showsNewest = false; // the LED is lit for the newest request, which is not done with this
    QTimer m_phaseEnd;
};

} // namespace oz::services
