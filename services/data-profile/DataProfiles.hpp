#pragma once

#include "source/Source.hpp"
#include "table/AskedRequest.hpp"
#include "table/Fields.hpp"

#include <QMap>

#include <sys/types.h>

namespace oz::services {

/*! The cellular data profiles and the state of mobile data, as any source knows them. */
struct DataProfiles
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

    bool operator==(const DataProfiles &) const = default;
};

class DataProfileSource : public StateSource<DataProfiles>
{
public:
    /*! Connects the profile for one more user: the outcome's text is the connection's id, of that user alone.
     * The state tells how it goes on. */
    virtual void connectProfile(const QString &profile, const Done &done) = 0;
    /*! Ends the connection for the user of \a connectionId. */
    virtual void disconnectProfile(const QString &profile, const QString &connectionId, const Done &done) = 0;
};

/*! How mobile data, and each profile under its name, stand in the tree. */
[[nodiscard]] const Fields<DataProfiles> &mobileDataFields();
[[nodiscard]] const Fields<DataProfiles::Profile> &dataProfileFields();

/*! The requests of applications about a profile. */
[[nodiscard]] std::vector<AskedRequest> dataProfileRequests();
/*! The object that takes what is asked of the profile \a name. */
[[nodiscard]] QString dataProfileControl(const QString &name);

} // namespace oz::services
