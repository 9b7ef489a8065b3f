#include "led/LedRequests.hpp"

#include <algorithm>

namespace oz::services {

LedRequests::LedRequests(LedSource &source) : m_source(source)
{
    m_phaseEnd.setSingleShot(true);
    m_phaseEnd.setTimerType(Qt::PreciseTimer);
    connect(&m_phaseEnd, &QTimer::timeout, this, [this] {
        if (m_phase == Lit) {
            darken();
        } else {
            m_phase = Ready;
            advance();
        }
    });
}

void LedRequests::begin(const LedRequest &request)
{
    end([&](const LedRequest &other) { return other.client == request.client && other.id == request.id; },
        QStringLiteral("replaced"));
    if (m_phase == Lit)
        darken();
    m_current.push_back(request);
    if (m_phase == Ready)
        advance();
    else
        Q_EMIT changed();
}

bool LedRequests::cancel(quint64 client, const QString &id)
{
    return end([&](const LedRequest &request) { return request.client == client && request.id == id; },
        QStringLiteral("cancelled"));
}

void LedRequests::forget(quint64 client)
{
    end([&](const LedRequest &request) { return request.client == client; }, QStringLiteral("client gone"));
}

int LedRequests::countOf(quint64 client) const
{
    return int(std::count_if(m_current.begin(), m_current.end(),
        [client](const LedRequest &request) { return request.client == client; }));
}

bool LedRequests::end(const std::function<bool(const LedRequest &)> &isMeant, const QString &how)
{
    const bool endsFlash = m_showsNewest && isMeant(m_current.back());
    const auto first = std::stable_partition(
        m_current.begin(), m_current.end(), [&](const LedRequest &request) { return !isMeant(request); });
    if (first == m_current.end())
        return false;
    m_last = {m_current.back(), how};
    m_current.erase(first, m_current.end());
    if (endsFlash)
        darken();
    Q_EMIT changed();
    return true;
}

void LedRequests::darken()
{
    m_source.light({});
    m_phase = Dark;
    m_showsNewest = false;
    m_phaseEnd.start(m_source.flash().off);
}

void LedRequests::advance()
{
    if (m_current.empty())
        return;
    LedRequest &request = m_current.back();
    ++request.shown;
    ++m_flashes;
    m_phase = Lit;
    m_phaseEnd.start(m_source.flash().on);
    m_source.light(request.elements);
    m_showsNewest = !request.isDone();
    if (request.isDone()) {
        m_last = {request, QStringLiteral("done")};
        m_current.pop_back();
    }
    Q_EMIT changed();
}

} // namespace oz::services
