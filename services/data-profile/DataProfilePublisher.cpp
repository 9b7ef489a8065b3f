#include "data-profile/DataProfilePublisher.hpp"

namespace oz::services {

namespace {

using Connection = DataProfileState::Connection;

const QString CnicePpsDir = QStringLiteral("/pps/services/cds/cnice/");
const QString ConnectId = QStringLiteral("connect_id");

QVariantMap attributesOf(const DataProfileState::Profile &profile)
{
    const bool connected = profile.connection == Connection::Established;
    QVariantMap attributes{{QStringLiteral("active"), profile.connection != Connection::None},
        {QStringLiteral("connected"), connected}};
    insertKnown(&attributes, QStringLiteral("enabled"), profile.enabled);
    insertKnown(&attributes, QStringLiteral("always_on"), profile.alwaysOn);
    insertKnown(&attributes, QStringLiteral("access_controlled"), profile.accessControlled);
    insertKnown(&attributes, QStringLiteral("apn"), profile.accessPoint);
    if (connected)
        attributes.insert(QStringLiteral("net_if"), profile.interface);
    return attributes;
}

} // namespace

DataProfilePublisher::DataProfilePublisher(const QString &facility, DataProfileSource &source, Tree &tree)
    : PublisherOf(facility, source, tree), m_status(tree, CnicePpsDir + QLatin1String("status"))
{
    declare(m_status);
    follow();
}

Publisher::FaultsByInstance DataProfilePublisher::faults()
{
    FaultsByInstance all;
    for (auto &[profile, control] : m_controls)
        all.emplace(profile, &control.faults());
    return all;
}

void DataProfilePublisher::publishState(const DataProfileState &state)
{
    QVariantMap attributes;
    if (state.dataOn) {
        attributes.insert(QStringLiteral("data_services_status"),
            *state.dataOn ? QStringLiteral("ON") : QStringLiteral("OFF"));
    }
    if (state.roaming) {
        attributes.insert(QStringLiteral("data_roaming_status"),
            *state.roaming ? QStringLiteral("ROAMING") : QStringLiteral("HOME"));
    }
    insertKnown(&attributes, QStringLiteral("user_enabled_data_roaming"), state.allowsRoaming);
    for (auto profile = state.profiles.cbegin(); profile != state.profiles.cend(); ++profile)
        attributes.insert(profile.key(), attributesOf(*profile));
    m_status.publish(attributes);
    std::erase_if(m_controls, [&](const auto &control) { return !state.profiles.contains(control.first); });
    for (auto profile = state.profiles.cbegin(); profile != state.profiles.cend(); ++profile)
        serve(profile.key(), profile->controlMode);
}

void DataProfilePublisher::publishAbsence()
{
    m_controls.clear();
    Publisher::publishAbsence();
}

void DataProfilePublisher::serve(const QString &profile, mode_t mode)
{
    const auto connectProfile = [this, profile](const Request &, const Answer &answer) {
        source().connectProfile(profile, answer.toDone(ConnectId));
    };
    const auto disconnectProfile = [this, profile](const Request &request, const Answer &answer) {
        source().disconnectProfile(
            profile, request.data.toMap().value(ConnectId).toString(), answer.toDone());
    };
    const RequestTable requests{{QStringLiteral("connect"), {}, connectProfile},
        {QStringLiteral("disconnect"), {}, disconnectProfile}};
    const auto [control, isNew] = m_controls.try_emplace(
        profile, tree(), CnicePpsDir + profile + QLatin1String("_control"), requests, &source());
    if (isNew)
        control->second.start(mode);
}

} // namespace oz::services
