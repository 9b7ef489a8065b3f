#pragma once

#include "source/Source.hpp"

#include <QMap>

#include <sys/types.h>

namespace oz::services {

struct DataProfileState
{
    enum class Connection { None, Pending, Established };

    struct Profile
    {
        std::optional<bool> enabled;
        std::optional<bool> alwaysOn;
        std::optional<bool> accessControlled;
        std::optional<QString> accessPoint;
        Connection connection = Connection::None;
        QString interface; //!< of the connection, once it is established
        mode_t controlMode = 0666; //!< who may send requests

        bool operator==(const Profile &) const = default;
    };

    std::optional<bool> dataOn; //!< whether the user has switched mobile data on
    std::optional<bool> allowsRoaming; //!< whether the user allows it while roaming
    std::optional<bool> roaming; //!< whether it runs over a network other than the home network
    QMap<QString, Profile> profiles; //!< by name

    bool operator==(const DataProfileState &) const = default;
};

/*! The cellular data profiles and the state of mobile data, whoever knows them. */
class DataProfileSource : public StateSource<DataProfileState>
{
public:
    /*! Connects the profile for one more user: the outcome's text is the connection's id, of that user alone.
     * The state tells how it goes on. */
    virtual void connectProfile(const QString &profile, const Done &done) = 0;
    /*! Ends the connection for the user of \a connectionId. */
    virtual void disconnectProfile(const QString &profile, const QString &connectionId, const Done &done) = 0;
};

} // namespace oz::services
