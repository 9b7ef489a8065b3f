#include "data-profile/DataProfilePublisher.hpp"

namespace oz::services {

namespace {

const QString ConnectId = QStringLiteral("connect_id");

} // namespace

DataProfilePublisher::DataProfilePublisher(const QString &facility, DataProfileSource &source, Tree &tree)
    : PublisherOf(facility, source, tree), m_status(tree, mobileDataFields().path())
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

void DataProfilePublisher::publishState(const DataProfiles &state)
{
    QVariantMap attributes = mobileDataFields().attributes(state);
    for (auto profile = state.profiles.cbegin(); profile != state.profiles.cend(); ++profile)
        attributes.insert(profile.key(), dataProfileFields().attributes(*profile));
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
    const auto [control, isNew] =
        m_controls.try_emplace(profile, tree(), dataProfileControl(profile), requests, &source());
    if (isNew)
        control->second.start(mode);
}

} // namespace oz::services
