#include "data-profile/SimulatedDataProfiles.hpp"

#include "phone/ShippedPhone.hpp"
#include "publishing/Error.hpp"
#include "radio/SimulatedRadio.hpp"

#include <QRegularExpression>
#include <QUuid>

#include <cerrno>

namespace oz::services {

namespace {

using Connection = DataProfileState::Connection;
using Profile = DataProfileState::Profile;

mode_t modeIn(const JsonNode &node, const QString &key)
{
    const QString text = node.text(key, QStringLiteral("0666"));
    static const QRegularExpression octal(QStringLiteral("^0?[0-7]{3}$"));
    if (!octal.match(text).hasMatch())
        node.fail(QLatin1String("expected a file mode such as \"0666\", found \"") + text + u'"', key);
    return text.toUInt(nullptr, 8);
}

} // namespace

SimulatedDataProfiles::SimulatedDataProfiles(const JsonNode &section, SimulatedPhone &phone)
    : m_clock(phone.clock()), m_radio(phone.part<SimulatedRadio>())
{
    const QString profiles = QStringLiteral("profiles");
    const QString connectTime = QStringLiteral("connect-seconds");
    section.allowOnly({connectTime, profiles});
    m_connectTime = section.seconds(connectTime, 1.5);
    const JsonNode all =
        (section.contains(profiles) ? section : shippedSection(QStringLiteral("data-profile"))).map(profiles);
    for (const auto &member : all.members())
        readProfile(member.first, all.map(member.first));
    connect(m_radio.get(), &SimulatedRadio::dataChanged, this, &SimulatedDataProfiles::update);
    update();
    establishAtOnce();
}

// What the phone does by itself is done when the services start.
void SimulatedDataProfiles::establishAtOnce()
{
    for (auto &[name, known] : m_known) {
        if (known.establishing.isActive()) {
            known.establishing.stop();
            known.profile.connection = Connection::Established;
        }
    }
    tell();
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
    Known &known = m_known.try_emplace(name, m_clock).first->second;
    Profile &profile = known.profile;
    profile.enabled = node.boolean(QStringLiteral("enabled"), true);
    profile.alwaysOn = node.boolean(QStringLiteral("always-on"), false);
    profile.accessControlled = node.boolean(QStringLiteral("access-controlled"), false);
    known.permitted = node.boolean(QStringLiteral("permitted"), true);
    if (!known.permitted && !*profile.accessControlled)
        node.fail(QStringLiteral("everyone may use a profile that is not access-controlled"),
            QStringLiteral("permitted"));
    if (const QString apn = node.text(QStringLiteral("apn"), {}); !apn.isEmpty())
        profile.accessPoint = apn;
    profile.interface = node.text(QStringLiteral("interface"), interface);
    profile.controlMode = modeIn(node, QStringLiteral("control-mode"));
    connect(&known.establishing, &PhoneTimer::timeout, this, [this, &profile] {
        profile.connection = Connection::Established;
        tell();
    });
}

void SimulatedDataProfiles::connectProfile(const QString &profile, const Done &done)
{
    const auto found = m_known.find(profile);
    if (found == m_known.end())
        return done({ENOENT, QStringLiteral("there is no such profile"), {}});
    Known &known = found->second;
    if (!known.permitted)
        return done({EACCES, QStringLiteral("only certain applications may use this profile"), {}});
    if (!*known.profile.enabled)
        return done({ENODEV, QStringLiteral("this profile is not enabled"), {}});
    if (const QString obstacle = m_radio->dataObstacle(); !obstacle.isEmpty())
        return done({ENETDOWN, obstacle, {}});
    const QString id = QUuid::createUuid().toString(QUuid::WithoutBraces);
    known.users.insert(id);
    update();
    done({0, {}, id});
}

void SimulatedDataProfiles::disconnectProfile(
    const QString &profile, const QString &connectionId, const Done &done)
{
    const auto found = m_known.find(profile);
    if (found == m_known.end() || !found->second.users.remove(connectionId))
        return done({EINVAL, QStringLiteral("this profile has no such connection"), {}});
    update();
    done({});
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
    return {
        SimVerb::onOff(
            QStringLiteral("enabled"), QStringLiteral("enables the profile"),
            [this, &known](bool on) {
                known.profile.enabled = on;
                update();
            },
            [&known] { return known.profile.enabled.value_or(false); }),
        SimVerb::onOff(
            QStringLiteral("permitted"),
            QStringLiteral("lets the applications here use it, where it is access-controlled"),
            [this, &known](bool on) {
                if (!*known.profile.accessControlled)
                    throw Error(QStringLiteral("everyone may use a profile that is not access-controlled"));
                known.permitted = on;
                tell();
            },
            [&known] { return known.permitted; }),
        {QStringLiteral("drop"), {}, QStringLiteral("ends its connection from the network's side"),
            [this, &known](const QStringList &) {
                end(known);
                update();
            }},
    };
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
    const bool possible = m_radio->dataObstacle().isEmpty();
    for (auto &[name, known] : m_known) {
        const bool wanted = *known.profile.alwaysOn || !known.users.isEmpty();
        if (!possible || !*known.profile.enabled || !wanted) {
            end(known);
        } else if (known.profile.connection == Connection::None) {
            known.profile.connection = Connection::Pending;
            known.establishing.start(m_connectTime);
        }
    }
    tell();
}

QVariantMap SimulatedDataProfiles::saved() const
{
    QVariantMap saved;
    for (const auto &[name, known] : m_known) {
        QStringList users(known.users.cbegin(), known.users.cend());
        users.sort();
        saved.insert(name,
            QVariantMap{{QStringLiteral("enabled"), *known.profile.enabled},
                {QStringLiteral("permitted"), known.permitted}, {QStringLiteral("users"), users},
                {QStringLiteral("connected"), known.profile.connection == Connection::Established}});
    }
    return saved;
}

void SimulatedDataProfiles::restore(const QVariantMap &saved)
{
    for (auto &[name, known] : m_known) {
        const QVariantMap before = saved.value(name).toMap();
        if (before.isEmpty())
            continue;
        known.profile.enabled = before.value(QStringLiteral("enabled")).toBool();
        known.permitted =
            before.value(QStringLiteral("permitted")).toBool() || !*known.profile.accessControlled;
        const QStringList users = before.value(QStringLiteral("users")).toStringList();
        known.users = QSet<QString>(users.cbegin(), users.cend());
        known.establishing.stop();
        const bool connected = before.value(QStringLiteral("connected")).toBool();
        known.profile.connection = connected ? Connection::Established : Connection::None;
    }
    update();
}

void SimulatedDataProfiles::tell()
{
    save();
    DataProfileState state{m_radio->isDataOn(), m_radio->allowsDataRoaming(), m_radio->isDataRoaming(), {}};
    for (const auto &[name, known] : m_known)
        state.profiles.insert(name, known.profile);
    know(state);
}

} // namespace oz::services
