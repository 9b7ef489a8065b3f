#include "dataprofile/SimulatedDataProfiles.hpp"

#include "core/Error.hpp"
#include "core/ShippedPhone.hpp"
#include "radio/SimulatedRadio.hpp"

#include <QRegularExpression>
#include <QUuid>

#include <cerrno>

namespace oz::services {

namespace {

mode_t modeIn(const JsonNode &node, const QString &key)
{
    const QString text = node.text(key, QStringLiteral("0666"));
    static const QRegularExpression octal(QStringLiteral("^0?[0-7]{3}$"));
    if (!octal.match(text).hasMatch())
        node.fail(QLatin1String("expected a file mode such as \"0666\", found \"") + text + u'"', key);
    return text.toUInt(nullptr, 8);
}

} // namespace

SimulatedDataProfiles::SimulatedDataProfiles(const JsonNode &section, const SimulatedRadio &radio)
    : m_radio(radio)
{
    const QString profiles = QStringLiteral("profiles");
    const QString connectTime = QStringLiteral("connect-seconds");
    section.allowOnly({connectTime, profiles});
    m_connectTime = section.seconds(connectTime, 1.5);
    const JsonNode all = (section.contains(profiles) ? section : shippedSection(name())).map(profiles);
    for (const auto &member : all.members())
        readProfile(member.first, all.map(member.first));
    connect(&radio, &SimulatedRadio::changed, this, &SimulatedDataProfiles::update);
    update();
    // What the phone does by itself is done when the services start.
    for (auto &[name, known] : m_known) {
        if (known.establishing.isActive()) {
            known.establishing.stop();
            known.profile.connection = Connection::Established;
        }
    }
}

void SimulatedDataProfiles::readProfile(const QString &name, const JsonNode &node)
{
    node.allowOnly({QStringLiteral("enabled"), QStringLiteral("always-on"),
        QStringLiteral("access-controlled"), QStringLiteral("permitted"), QStringLiteral("apn"),
        QStringLiteral("interface"), QStringLiteral("control-mode")});
    // The name is that of an attribute and of an object.
    static const QRegularExpression plain(QStringLiteral("^[A-Za-z0-9][A-Za-z0-9_-]*$"));
    static const QStringList taken{QStringLiteral("data_services_status"),
        QStringLiteral("data_roaming_status"), QStringLiteral("user_enabled_data_roaming")};
    if (!plain.match(name).hasMatch() || taken.contains(name))
        node.fail(QStringLiteral("no name for a profile; expected letters, digits, '-' and '_'"));

    const QString interface = QLatin1String("rmnet") + QString::number(m_known.size());
    Known &known = m_known[name];
    Profile &profile = known.profile;
    profile.enabled = node.boolean(QStringLiteral("enabled"), true);
    profile.alwaysOn = node.boolean(QStringLiteral("always-on"), false);
    profile.accessControlled = node.boolean(QStringLiteral("access-controlled"), false);
    known.permitted = node.boolean(QStringLiteral("permitted"), true);
    if (!known.permitted && !profile.accessControlled)
        node.fail(QStringLiteral("everyone may use a profile that is not access-controlled"),
            QStringLiteral("permitted"));
    profile.accessPoint = node.text(QStringLiteral("apn"), {});
    profile.interface = node.text(QStringLiteral("interface"), interface);
    profile.controlMode = modeIn(node, QStringLiteral("control-mode"));
    known.establishing.setSingleShot(true);
    connect(&known.establishing, &QTimer::timeout, this, [this, &profile] {
        profile.connection = Connection::Established;
        Q_EMIT changed();
    });
}

std::optional<DataProfileSource::State> SimulatedDataProfiles::state() const
{
    State state{m_radio.isDataOn(), m_radio.allowsDataRoaming(), m_radio.isDataRoaming(), {}};
    for (const auto &[name, known] : m_known)
        state.profiles.insert(name, known.profile);
    return state;
}

DataProfileSource::Result SimulatedDataProfiles::connectProfile(const QString &profile)
{
    Known &known = m_known.at(profile);
    if (!known.permitted)
        return {{}, EACCES, QStringLiteral("only certain applications may use this profile")};
    if (!known.profile.enabled)
        return {{}, ENODEV, QStringLiteral("this profile is not enabled")};
    if (const QString obstacle = m_radio.dataObstacle(); !obstacle.isEmpty())
        return {{}, ENETDOWN, obstacle};
    const QString id = QUuid::createUuid().toString(QUuid::WithoutBraces);
    known.users.insert(id);
    update();
    return {id, 0, {}};
}

DataProfileSource::Result SimulatedDataProfiles::disconnectProfile(
    const QString &profile, const QString &connectionId)
{
    if (!m_known.at(profile).users.remove(connectionId))
        return {{}, EINVAL, QStringLiteral("this profile has no such connection")};
    update();
    return {};
}

std::optional<Mishap> SimulatedDataProfiles::takeMishap(const QString &profile, const QString &message)
{
    return m_known.at(profile).mishaps.take(message);
}

QStringList SimulatedDataProfiles::instances() const
{
    QStringList names;
    for (const auto &[name, known] : m_known)
        names.append(name);
    return names;
}

std::vector<SimVerb> SimulatedDataProfiles::verbs(const QString &instance)
{
    Known &known = m_known.at(instance);
    std::vector<SimVerb> verbs{
        SimVerb::onOff(QStringLiteral("enabled"), QStringLiteral("enables the profile"),
            [this, &known](bool on) {
                known.profile.enabled = on;
                update();
            }),
        SimVerb::onOff(QStringLiteral("permitted"),
            QStringLiteral("lets the applications here use it, where it is access-controlled"),
            [&known](bool on) {
                if (!known.profile.accessControlled)
                    throw Error(QStringLiteral("everyone may use a profile that is not access-controlled"));
                known.permitted = on;
            }),
        {QStringLiteral("drop"), {}, QStringLiteral("ends its connection from the network's side"),
            [this, &known](const QStringList &) {
                end(known);
                update();
            }},
    };
    for (const SimVerb &mishap : known.mishaps.verbs())
        verbs.push_back(mishap);
    return verbs;
}

void SimulatedDataProfiles::end(Known &known)
{
    known.users.clear();
    known.establishing.stop();
    known.profile.connection = Connection::None;
}

// Starts and ends connections so that they fit what is wanted and possible now.
void SimulatedDataProfiles::update()
{
    const bool possible = m_radio.dataObstacle().isEmpty();
    for (auto &[name, known] : m_known) {
        const bool wanted = known.profile.alwaysOn || !known.users.isEmpty();
        if (!possible || !known.profile.enabled || !wanted) {
            end(known);
        } else if (known.profile.connection == Connection::None) {
            known.profile.connection = Connection::Pending;
            known.establishing.start(m_connectTime);
        }
    }
    Q_EMIT changed();
}

} // namespace oz::services
