#include "data-profile/DataProfiles.hpp"

namespace oz::services {

namespace {

using Connection = DataProfiles::Connection;

const QString Folder = QStringLiteral("/pps/services/cds/cnice/");
const QString Status = Folder + QLatin1String("status");
const QString ControlSuffix = QStringLiteral("_control");

// The profile's name is in the path.
AskedRequest profileRequest(const char *name, const char *help)
{
    const QString profile = QStringLiteral("profile");
    const QString message = QString::fromLatin1(name);
    return {message, {{profile, {ValueType::Text}}}, QString::fromUtf8(help),
        [profile, message](const QString &asked, const QVariantMap &attributes) -> QVariant {
            if (!asked.startsWith(Folder) || !asked.endsWith(ControlSuffix)
                || attributes.value(QStringLiteral("msg")) != message)
                return {};
            return QVariantMap{{profile, asked.mid(Folder.size()).chopped(ControlSuffix.size())}};
        }};
}

QVariant isActive(const DataProfiles::Profile &profile)
{
    return profile.connection != Connection::None;
}

QVariant isConnected(const DataProfiles::Profile &profile)
{
    return profile.connection == Connection::Established;
}

// Two attributes of a profile together tell how it is connected.
QVariant connectionWord(const QVariant &profile)
{
    const QVariantMap attributes = profile.toMap();
    if (attributes.isEmpty())
        return {};
    return attributes.value(QStringLiteral("connected")).toBool() ? QStringLiteral("connected")
        : attributes.value(QStringLiteral("active")).toBool()     ? QStringLiteral("connecting")
                                                                  : QStringLiteral("disconnected");
}

std::optional<QString> interfaceOf(const DataProfiles::Profile &profile)
{
    return profile.connection == Connection::Established ? std::optional(profile.interface) : std::nullopt;
}

} // namespace

const Fields<DataProfiles> &mobileDataFields()
{
    using D = DataProfiles;
    using C = Columns<DataProfiles>;
    static const Fields<DataProfiles> fields(Status,
        {
            {"radio.data", "data_services_status", C::truth(&D::dataOn, "ON", "OFF"),
                "whether mobile data is on"},
            {"radio.data-roaming", "user_enabled_data_roaming", C::truth(&D::allowsRoaming),
                "whether the user allows mobile data while roaming"},
            {"radio.roaming", "data_roaming_status", C::truth(&D::roaming, "ROAMING", "HOME"),
                "whether mobile data is roaming"},
        });
    return fields;
}

const Fields<DataProfiles::Profile> &dataProfileFields()
{
    using P = DataProfiles::Profile;
    using C = Columns<P>;
    static const ValueType connection{ValueType::Word, {},
        {QStringLiteral("disconnected"), QStringLiteral("connecting"), QStringLiteral("connected")}};
    static const Fields<P> fields(Status,
        {
            {"enabled", "enabled", C::truth(&P::enabled), "whether the profile is enabled"},
            {"always-on", "always_on", C::truth(&P::alwaysOn), "whether it connects without being asked"},
            {"access-controlled", "access_controlled", C::truth(&P::accessControlled),
                "whether only permitted applications may use it"},
            {"apn", "apn", C::text(&P::accessPoint), "its access point"},
            {"interface", "net_if", C::text(interfaceOf), "the network interface of its connection"},
            {"connection", "", C::custom(connection, {}, connectionWord), "the state of its connection"},
            {"", "active", C::custom({}, isActive), ""},
            {"", "connected", C::custom({}, isConnected), ""},
        },
        0644, Fields<P>::Each);
    return fields;
}

std::vector<AskedRequest> dataProfileRequests()
{
    return {profileRequest("connect", "to connect a profile"),
        profileRequest("disconnect", "to release a connection")};
}

QString dataProfileControl(const QString &name)
{
    return Folder + name + ControlSuffix;
}

} // namespace oz::services
