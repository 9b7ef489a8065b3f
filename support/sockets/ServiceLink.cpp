#include "sockets/ServiceLink.hpp"

#include <oz/Limits.hpp>

#include <algorithm>
#include <cerrno>
#include <sys/stat.h>

namespace oz {

namespace {

using namespace std::chrono_literals;
using LocalSocket::Wait;

// A process that dies ends its connections before it stops listening.
constexpr auto SettleTime = 100ms;

} // namespace

int ServiceLink::connect(Wait wait, UniqueFd *socket)
{
    struct stat status;
    if (::stat(m_file.constData(), &status) < 0)
        return errno;
    m_candidate = FileIdentity(status);
    return LocalSocket::connect(m_file, wait, socket, m_type);
}

int ServiceLink::connectToNext(UniqueFd *socket)
{
    struct stat status;
    if (::stat(m_file.constData(), &status) < 0)
        return errno;
    if (FileIdentity(status) == m_service || !S_ISSOCK(status.st_mode))
        return ENOENT;
    return connect(Wait::No, socket);
}

void ServiceLink::establish()
{
    m_service = m_candidate;
    m_state = State::Up;
}

void ServiceLink::lose()
{
    m_state = State::Away;
    m_awayUntil.setRemainingTime(graceTime());
    m_unsettledUntil.setRemainingTime(SettleTime);
}

bool ServiceLink::giveUpIfLost()
{
    if (m_state != State::Away)
        return false;
    if (!m_awayUntil.hasExpired() && !(m_unsettledUntil.hasExpired() && serviceLives()))
        return false;
    giveUp();
    return true;
}

QDeadlineTimer ServiceLink::nextJudgement() const
{
    return m_unsettledUntil.hasExpired() ? m_awayUntil : std::min(m_unsettledUntil, m_awayUntil);
}

bool ServiceLink::serviceLives() const
{
    struct stat status;
    UniqueFd probe;
    if (::stat(m_file.constData(), &status) < 0 || !(FileIdentity(status) == m_service))
        return false;
    const int error = LocalSocket::connect(m_file, Wait::No, &probe, m_type);
    return error == 0 || error == EAGAIN;
}

std::optional<std::chrono::milliseconds> ServiceRetry::pauseAfter(int error)
{
    // EAGAIN: nothing tells when the service has accepted enough others. ECONNREFUSED: a socket that has just
    // got its name may not be listened on yet, and one that a dead service left never will be.
    if (error == EAGAIN || (error == ECONNREFUSED && !m_pause.isLongest()))
        return m_pause.next();
    return std::nullopt;
}

ServiceReturn::ServiceReturn(const ServiceLink &link, Owner *owner) : m_owner(owner)
{
    for (const QDeadlineTimer &judgement : link.judgements()) {
        // Any other timer may be early.
        const std::chrono::milliseconds left(judgement.remainingTime() + 1);
        QTimer::singleShot(left, Qt::PreciseTimer, this, [this] { m_owner->judgeLoss(); });
    }
    m_again.setSingleShot(true);
    m_again.callOnTimeout(this, &ServiceReturn::look);
    m_again.start(0);
}

void ServiceReturn::onPathChanged()
{
    m_retry.reset();
    look();
}

void ServiceReturn::look()
{
    const int error = m_owner->lookForService();
    if (error == 0)
        return; // the owner may have destroyed this
    if (const auto pause = m_retry.pauseAfter(error))
        m_again.start(*pause);
}

} // namespace oz
