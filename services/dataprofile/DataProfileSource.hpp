#pragma once

#include "core/Mishaps.hpp"

#include <QMap>
#include <QObject>
#include <QString>

#include <optional>
#include <sys/types.h>

namespace oz::services {

/*! The cellular data profiles and the state of mobile data, whoever knows them. */
class DataProfileSource : public QObject
{
    Q_OBJECT

public:
    enum class Connection { None, Pending, Established };

    struct Profile
    {
        bool enabled = false;
        bool alwaysOn = false;
        bool accessControlled = false;
        QString accessPoint; //!< empty where it is not known
        Connection connection = Connection::None;
        QString interface; //!< of the connection, once it is established
        mode_t controlMode = 0666; //!< who may send requests
    };

    struct State
    {
        bool dataOn = false; //!< whether the user has switched mobile data on
        bool allowsRoaming = false; //!< whether the user allows it while roaming
        bool roaming = false; //!< whether it runs over a network other than the home network
        QMap<QString, Profile> profiles; //!< by name; the names stay the same
    };

    /*! What became of a request; an error is an errno that is not 0. */
    struct Result
    {
        QString connectionId; //!< of what was connected
        int error = 0;
        QString errorText;
    };

    /*! The state; nothing while it is not known yet, which is then not published either. */
    [[nodiscard]] virtual std::optional<State> state() const = 0;
    /*! Connects the profile for one more user, of whom the connection's id is; the state tells how it goes
     * on. */
    [[nodiscard]] virtual Result connectProfile(const QString &profile) = 0;
    /*! Ends the connection for the user of \a connectionId. */
    [[nodiscard]] virtual Result disconnectProfile(const QString &profile, const QString &connectionId) = 0;
    /*! What goes wrong with the request \a message about the profile that has come, where that can be
     * arranged. */
    [[nodiscard]] virtual std::optional<Mishap> takeMishap(
        const QString & /*profile*/, const QString & /*message*/)
    {
        return {};
    }

Q_SIGNALS:
    void changed();
};

} // namespace oz::services
