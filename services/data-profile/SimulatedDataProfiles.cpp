#include "data-profile/SimulatedDataProfiles.hpp"

#include "phone/ShippedPhone.hpp"
#include "radio/SimulatedRadio.hpp"
#include "source/Error.hpp"

#include <QRegularExpression>
#include <QUuid>

#include <cerrno>

namespace oz::services {

namespace {

using Connection = DataProfiles::Connection;
using Profile = DataProfiles::Profile;

// How a profile is connected, as it is saved.
const QString Users = QStringLiteral("users");
const QString Connected = QStringLiteral("connected");

} // namespace

const Settings<SimulatedDataProfiles> &SimulatedDataProfiles::table()
{
    using C = SettingColumns<SimulatedDataProfiles>;
    static const Settings<SimulatedDataProfiles> table{
        {"connect-seconds", C::seconds(&SimulatedDataProfiles::m_connectTime, 0, 3'600), 1.5,
            "how long it takes to connect"},
    };
    return table;
}

const Settings<SimulatedDataProfiles::Known> &SimulatedDataProfiles::profileTable()
{
    using K = Known;
    using C = SettingColumns<Known>;
    static const auto of = [](auto member) {
        return [member](auto &known) -> auto &
        {
            return known.profile.*member;
        };
    };
    static const ValueType mode = [] {
        ValueType type{ValueType::Text};
        type.form = QStringLiteral("0?[0-7]{3}");
        type.formText = QStringLiteral("a file mode such as \"0666\"");
        return type;
    }();
    static const SettingColumn<Known> controlMode{mode,
        [](const K &known) { return QVariant(QString::number(known.profile.controlMode, 8)); },
        [](K &known, const QVariant &text) {
            known.profile.controlMode = text.toString().toUInt(nullptr, 8);
        }};
    static const Settings<Known> table{
        {"enabled", C::truth(of(&Profile::enabled)).alwaysKnown(), true, "whether the profile is enabled",
            onOff("enabled", "enables the profile")},
        {"always-on", C::truth(of(&Profile::alwaysOn)).alwaysKnown(), false,
            "whether it connects without being asked, while there is mobile data"},
        {"access-controlled", C::truth(of(&Profile::accessControlled)).alwaysKnown(), false,
            "whether only permitted applications may use it"},
        {"permitted", C::truth(&K::permitted).by(&K::setPermitted), true,
            "whether the applications here are permitted",
            onOff("permitted", "permits the applications here, where it is access-controlled")},
        {"apn", C::text(of(&Profile::accessPoint)), {}, "its access point"},
        {"interface", C::text(of(&Profile::interface)), QString(),
            "the network interface of its connection; rmnet and its place in the file if left out"},
        {"control-mode", controlMode, QStringLiteral("0666"), "the file mode of its object for requests"},
    };
    return table;
}

SimulatedDataProfiles::SimulatedDataProfiles(const JsonNode &section, SimulatedParts &phone)
    : m_clock(phone.clock()), m_radio(phone.part<SimulatedRadio>())
{
    read(section, settings({}), {instancesKey()});
    const JsonNode all = givenOrShipped(section, QStringLiteral("data-profile"), instancesKey());
    for (const auto &member : all.members())
        readProfile(member.first, all.map(member.first));
    connect(m_radio.get(), &SimulatedRadio::dataChanged, this, &SimulatedDataProfiles::update);
    update();
    establishAtOnce();
}

std::vector<Setting> SimulatedDataProfiles::settings(const QString &instance)
{
    return instance.isEmpty() ? table().of(this) : profileTable().of(&m_known.at(instance));
}

// The phone's own connections are made when the services start.
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
    // The name is that of an attribute and of an object.
    static const QRegularExpression plain(QStringLiteral("^[A-Za-z0-9][A-Za-z0-9_-]*$"));
    static const QStringList taken{QStringLiteral("data_services_status"),
        QStringLiteral("data_roaming_status"), QStringLiteral("user_enabled_data_roaming")};
    if (!plain.match(name).hasMatch() || taken.contains(name))
        node.fail(QStringLiteral("no name for a profile; expected letters, digits, '-' and '_'"));

    const QString interface = QLatin1String("rmnet") + QString::number(m_known.size());
    Known &known = m_known.try_emplace(name, m_clock).first->second;
    std::vector<Setting> settings = profileTable().of(&known);
    for (Setting &setting : settings) {
        if (setting.key == u"interface")
            setting.initial = interface;
    }
    read(node, settings);
    connect(&known.establishing, &PhoneTimer::timeout, this, [this, &known] {
        known.profile.connection = Connection::Established;
        tell();
    });
}

// Everyone may use a profile that is not access-controlled.
void SimulatedDataProfiles::Known::setPermitted(bool on)
{
    if (!on && !*profile.accessControlled)
        throw WrongSetting(QStringLiteral("everyone may use a profile that is not access-controlled"));
    permitted = on;
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
    std::vector<SimVerb> verbs = SimulatedPart::verbs(instance);
    verbs.push_back({QStringLiteral("drop"), {},
        QStringLiteral("ends its connection from the network's side"), [this, instance](const QStringList &) {
            end(m_known.at(instance));
            update();
        }});
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

QVariantMap SimulatedDataProfiles::saved()
{
    QVariantMap saved = SimulatedPart::saved();
    QVariantMap profiles = saved.value(instancesKey()).toMap();
    for (const auto &[name, known] : m_known) {
        QStringList users(known.users.cbegin(), known.users.cend());
        users.sort();
        QVariantMap profile = profiles.value(name).toMap();
        profile.insert(Users, users);
        profile.insert(Connected, known.profile.connection == Connection::Established);
        profiles.insert(name, profile);
    }
    saved.insert(instancesKey(), profiles);
    return saved;
}

void SimulatedDataProfiles::restore(const QVariantMap &saved)
{
    const QVariantMap profiles = saved.value(instancesKey()).toMap();
    for (auto &[name, known] : m_known) {
        const QVariantMap before = profiles.value(name).toMap();
        const QStringList users = before.value(Users).toStringList();
        known.users = QSet<QString>(users.cbegin(), users.cend());
        known.establishing.stop();
        known.profile.connection =
            before.value(Connected).toBool() ? Connection::Established : Connection::None;
    }
    SimulatedPart::restore(saved);
}

void SimulatedDataProfiles::tell()
{
    save();
    DataProfiles state{m_radio->isDataOn(), m_radio->allowsDataRoaming(), m_radio->isDataRoaming(), {}};
    for (const auto &[name, known] : m_known)
        state.profiles.insert(name, known.profile);
    know(state);
}

} // namespace oz::services
