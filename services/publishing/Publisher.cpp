#include "publishing/Publisher.hpp"

#include "publishing/Log.hpp"

#include <oz/Limits.hpp>

namespace oz::services {

Publisher::Publisher(const QString &facility, Source &source, Tree &tree)
    : m_facility(facility), m_source(source), m_tree(tree)
{
    m_grace.setSingleShot(true);
    m_grace.setInterval(graceTime());
    connect(&m_grace, &QTimer::timeout, this, &Publisher::giveUp);
    connect(&source, &Source::changed, this, &Publisher::onChanged);
}

void Publisher::follow()
{
    const bool holds = m_source.isKnown() || m_tree.isContinued(m_facility);
    for (StatePublisher *state : m_states) {
        if (holds)
            state->stand();
        else
            state->publish({}); // another source's values, or a stranger's
    }
    onChanged();
}

void Publisher::republish()
{
    if (m_source.isKnown())
        publish();
    else if (m_isEmptied)
        publishAbsence();
}

void Publisher::onChanged()
{
    if (m_source.isKnown()) {
        m_grace.stop();
        if (std::exchange(m_isEmptied, false))
            qCInfo(logServices).noquote() << m_facility + QLatin1String(" is there");
        publish();
        settle();
        return;
    }
    if (!m_isEmptied && !m_grace.isActive())
        m_grace.start();
    if (m_source.presence() == Source::Presence::Absent)
        settle();
}

// The values that a former daemon or the source published last are no longer true.
void Publisher::giveUp()
{
    m_isEmptied = true;
    qCWarning(logServices).noquote() << m_facility + QLatin1String(" is absent: ") + m_source.absence();
    publishAbsence();
    settle();
}

void Publisher::publishAbsence()
{
    for (StatePublisher *state : m_states)
        state->publish({});
}

void Publisher::settle()
{
    if (!std::exchange(m_hasSettled, true))
        Q_EMIT settled();
}

} // namespace oz::services
