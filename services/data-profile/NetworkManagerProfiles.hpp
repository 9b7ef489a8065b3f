#pragma once

#include "data-profile/DataProfiles.hpp"
#include "linux/BusSource.hpp"

#include <QSet>

namespace oz::services {

class StateStore;

/*!
 * NetworkManager's mobile connections: each is a profile under its name. A profile is connected as long as
 * one of its users wants that, or somebody else has activated it.
 */
class NetworkManagerProfiles final : public BusSource<DataProfileSource>
{
public:
    NetworkManagerProfiles(std::shared_ptr<SystemBus> bus, StateStore &store);

    void connectProfile(const QString &profile, const Done &done) override;
    void disconnectProfile(const QString &profile, const QString &connectionId, const Done &done) override;

private:
    using Settings = QMap<QString, QVariantMap>; // by group

    // One that applications have asked for.
    struct Attempt
    {
        QString active; // its path
        bool hasBeenShown; // for long enough
    };

    void readState() override;
    [[nodiscard]] bool isIncomplete(
        const DataProfiles &now, const std::optional<DataProfiles> &before) const override;
    void followActive();
    void beginAttempt(const QString &connection, const QString &active);
    void endAttempts();
    void readSettings(const QString &path);
    [[nodiscard]] QString nameOf(const Settings &settings) const;
    [[nodiscard]] QString activeOf(const QString &connection) const;
    [[nodiscard]] uint stateOf(const QString &active) const;
    [[nodiscard]] DataProfiles::Profile profileOf(const QString &connection, const Settings &settings) const;
    [[nodiscard]] QVariant ofManager(const char *name) const;
    QString addUser(const QString &profile);
    void save();

    StateStore &m_store;
    QMap<QString, Settings> m_settings; // by the connections' paths
    QSet<QString> m_asked; // connections whose settings are asked for
    QMap<QString, QString> m_connections; // by the profiles' names
    QMap<QString, Attempt> m_attempts; // by the connections' paths
    QMap<QString, QSet<QString>> m_users; // connection ids, by the profiles' names
};

} // namespace oz::services
