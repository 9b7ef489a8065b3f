#pragma once

#include <oz/client/DaemonClient.hpp>
#include <oz/client/FollowedObject.hpp>

#include <QObject>
#include <QVariantMap>

namespace oz::client {

/*! Follows the scenario that the daemon under deviceRoot() plays, or has played last, from its beginning on,
 * and then the next one. */
class ScenarioFollower : public QObject
{
    Q_OBJECT

public:
    explicit ScenarioFollower(QObject *parent = nullptr);

Q_SIGNALS:
    /*!
     * Something has happened. \a told has what the daemon's object DaemonObjects::Scenario has, and the new
     * "entries" of the log. Its "state" is "playing" until all entries have come. The "number" is another one
     * for each scenario; it is 0 while none has been played.
     */
    void told(const QVariantMap &told);
    /*! The daemon has ended. Where it still played a scenario, nothing more is told of that. */
    void lost();

private:
    void onChanged();
    void ask();
    void take(const QVariantMap &answer);
    void onEnd();

    DaemonClient m_client;
    FollowedObject m_object;
    QVariantMap m_state;
    int m_number = 0;
    qint64 m_next = 0;
    bool m_isPlaying = false; // as was told last
    bool m_isAsking = false;
    bool m_isChanged = false; // since the request that is under way
};

} // namespace oz::client
