#include "dataprofile/DataProfilePublisher.hpp"

#include <cerrno>

namespace oz::services {

namespace {

const QString CnicePpsDir = QStringLiteral("/pps/services/cds/cnice/");
const QString ConnectId = QStringLiteral("connect_id");

QVariantMap attributesOf(const DataProfileSource::Profile &profile)
{
    using Connection = DataProfileSource::Connection;
    const bool connected = profile.connection == Connection::Established;
    QVariantMap attributes{
        {QStringLiteral("enabled"), profile.enabled},
        {QStringLiteral("always_on"), profile.alwaysOn},
        {QStringLiteral("access_controlled"), profile.accessControlled},
        {QStringLiteral("active"), profile.connection != Connection::None},
        {QStringLiteral("connected"), connected},
    };
    if (connected)
        attributes.insert(QStringLiteral("net_if"), profile.interface);
    if (!profile.accessPoint.isEmpty())
        attributes.insert(QStringLiteral("apn"), profile.accessPoint);
    return attributes;
}

} // namespace

DataProfilePublisher::DataProfilePublisher(DataProfileSource &source)
    : m_source(source), m_status(CnicePpsDir + QLatin1String("status"))
{
    connect(&source, &DataProfileSource::changed, this, &DataProfilePublisher::publish);
    publish();
}

void DataProfilePublisher::publish()
{
    const auto state = m_source.state();
    if (!state)
        return;
    QVariantMap attributes{
        {QStringLiteral("data_services_status"),
            state->dataOn ? QStringLiteral("ON") : QStringLiteral("OFF")},
        {QStringLiteral("data_roaming_status"),
            state->roaming ? QStringLiteral("ROAMING") : QStringLiteral("HOME")},
        {QStringLiteral("user_enabled_data_roaming"), state->allowsRoaming},
    };
    for (auto profile = state->profiles.cbegin(); profile != state->profiles.cend(); ++profile)
        attributes.insert(profile.key(), attributesOf(*profile));
    m_status.publish(attributes);
    for (auto profile = state->profiles.cbegin(); profile != state->profiles.cend(); ++profile)
        serve(profile.key(), profile->controlMode);
}

void DataProfilePublisher::serve(const QString &profile, mode_t mode)
{
    const auto [control, isNew] = m_controls.try_emplace(
        profile, CnicePpsDir + profile + QLatin1String("_control"),
        [this, profile](const Request &request) { return onRequest(profile, request); },
        [this, profile](const Request &request) { return m_source.takeMishap(profile, request.message); });
    if (isNew)
        control->second.start(mode);
}

Reply DataProfilePublisher::onRequest(const QString &profile, const Request &request)
{
    DataProfileSource::Result result;
    if (request.message == u"connect") {
        result = m_source.connectProfile(profile);
    } else if (request.message == u"disconnect") {
        result = m_source.disconnectProfile(profile, request.data.toMap().value(ConnectId).toString());
    } else {
        result.error = EINVAL;
        result.errorText = QLatin1String("unknown request '") + request.message
            + QLatin1String("'; known are connect, disconnect");
    }
    Reply reply{{}, result.error, result.errorText};
    if (!result.connectionId.isEmpty())
        reply.data = QVariantMap{{ConnectId, result.connectionId}};
    return reply;
}

} // namespace oz::services
