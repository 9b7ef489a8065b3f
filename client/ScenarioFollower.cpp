#include <oz/client/ScenarioFollower.hpp>

#include <oz/client/DaemonObjects.hpp>

#include <utility>

namespace oz::client {

namespace {

const QString Number = QStringLiteral("number");

bool isPlaying(const QVariantMap &state)
{
    return state.value(QStringLiteral("state")) == QStringLiteral("playing");
}

} // namespace

ScenarioFollower::ScenarioFollower(QObject *parent)
    : QObject(parent), m_object(DaemonObjects::Scenario, [this](const QVariantMap &state) {
          if (state.isEmpty())
              return; // it was removed with the daemon's tree
          m_state = state;
          onChanged();
      })
{
    m_client.watchEnd(this, [this] { onEnd(); });
}

void ScenarioFollower::onChanged()
{
    if (m_isAsking) {
        m_isChanged = true;
    } else if (m_state.value(Number).toInt() == 0) {
        m_next = 0;
        if (std::exchange(m_number, 0) != 0) // it was another daemon's
            Q_EMIT told(m_state);
    } else {
        ask();
    }
}

void ScenarioFollower::ask()
{
    m_isAsking = true;
    m_isChanged = false;
    m_client.askLater(QStringLiteral("scenario"), QVariantMap{{QStringLiteral("from"), m_next}}, this,
        [this](const QVariant &data, const std::optional<DaemonError> &error) {
            m_isAsking = false;
            if (!error)
                take(data.toMap());
            if (m_isChanged)
                onChanged();
        });
}

void ScenarioFollower::take(const QVariantMap &answer)
{
    const int number = answer.value(Number).toInt();
    if (std::exchange(m_number, number) != number && std::exchange(m_next, 0) != 0) {
        m_isChanged = true; // the log of another scenario is told from its beginning
        return;
    }
    m_next = answer.value(QStringLiteral("next")).toLongLong();
    m_isChanged = m_isChanged || m_next < answer.value(QStringLiteral("count")).toLongLong();
    m_isPlaying = isPlaying(answer);
    Q_EMIT told(answer);
}

void ScenarioFollower::onEnd()
{
    m_object.read();
    // A daemon that ends by itself stops the scenario first, and answers nothing after that.
    const bool isStopped = m_state.value(Number).toInt() == m_number && !isPlaying(m_state);
    if (std::exchange(m_isPlaying, false) && isStopped)
        Q_EMIT told(m_state);
    else
        Q_EMIT lost();
}

} // namespace oz::client
