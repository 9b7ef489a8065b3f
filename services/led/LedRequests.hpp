#pragma once

#include "led/LedSource.hpp"

#include <QTimer>

#include <vector>

namespace oz::services {

/*! A request to let the LED flash. */
struct LedRequest
{
    static constexpr int UntilCancelled = -1;

    quint64 client = 0; //!< the connection that it came on
    QString id; //!< as the client chose it, for this connection
    qint64 process = 0;
    QString color;
    LedSource::Elements elements;
    int count = UntilCancelled;
    int shown = 0; //!< flashes so far

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

    /*! Begins \a request; one of the same client and id ends. */
    void begin(const LedRequest &request);
    /*! Ends a request; false where there is none. The last flash of one that is done is not cut short. */
    bool cancel(quint64 client, const QString &id);
    /*! Ends all requests of a client. */
    void forget(quint64 client);
    [[nodiscard]] int countOf(quint64 client) const;

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
    void darken();
    void advance();

    LedSource &m_source;
    std::vector<LedRequest> m_current;
    std::optional<std::pair<LedRequest, QString>> m_last;
    quint64 m_flashes = 0;
    Phase m_phase = Ready;
    bool m_showsNewest = false; // the LED is lit for the newest request, which is not done with this
    QTimer m_phaseEnd;
};

} // namespace oz::services
