#include "led/LedRequests.hpp"

#include <QPointer>

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

void LedRequests::restore(const std::vector<LedRequest> &requests)
{
    m_current = requests;
    // It may have been lit when the service died: only a flash after darkness is one more.
    darken();
}

void LedRequests::begin(const LedRequest &request)
{
    end([&](const LedRequest &other) { return other.isSameAs(request); }, QStringLiteral("replaced"));
    if (m_phase == Lit)
        darken();
    m_current.push_back(request);
    if (m_phase == Ready)
        advance();
    else
        Q_EMIT changed();
}

bool LedRequests::cancel(const LedRequest &request)
{
    return end([&](const LedRequest &other) { return other.isSameAs(request); }, QStringLiteral("cancelled"));
}

void LedRequests::forget(const std::function<bool(const LedRequest &)> &isGone)
{
    end(isGone, QStringLiteral("client gone"));
}

int LedRequests::countBeside(const LedRequest &request) const
{
    return int(std::count_if(m_current.begin(), m_current.end(),
        [&](const LedRequest &other) { return other.user == request.user && !other.isSameAs(request); }));
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

void LedRequests::light(const LedState::Elements &elements)
{
    m_source.light(elements, [self = QPointer(this)](const Outcome &outcome) {
        if (self)
            self->m_warn(outcome.error ? QLatin1String("led: ") + outcome.errorText : QString());
    });
}

void LedRequests::darken()
{
    light({});
    m_phase = Dark;
    m_showsNewest = false;
    m_phaseEnd.start(times().darkTime);
}

// While the LED is away, the usual ones.
LedState LedRequests::times() const
{
    return m_source.state().value_or(LedState());
}

void LedRequests::advance()
{
    if (m_current.empty())
        return;
    LedRequest &request = m_current.back();
    ++request.shown;
    ++m_flashes;
    m_phase = Lit;
    m_phaseEnd.start(times().flashTime);
    light(request.elements);
    m_showsNewest = !request.isDone();
    if (request.isDone()) {
        m_last = {request, QStringLiteral("done")};
        m_current.pop_back();
    }
    Q_EMIT changed();
}

} // namespace oz::services
