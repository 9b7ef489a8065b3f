#include "device/SimulatedActivity.hpp"

namespace oz::services {

namespace {

const QString Others = QStringLiteral("other-statuses");
// A client reads 255 bytes at a time, and loses a line that two reads cut. Up to two lines wait for it.
constexpr int MaxValueSize = 120;

// The reason why this is no status; nothing where it is one.
QString faultOf(const QString &value)
{
    if (value.contains(u'\n'))
        return QStringLiteral("a status is one line");
    return value.toUtf8().size() > MaxValueSize ? QStringLiteral("a status has at most 120 bytes")
                                                : QString();
}

} // namespace

const Settings<SimulatedActivity> &SimulatedActivity::table()
{
    using A = SimulatedActivity;
    using C = SettingColumns<SimulatedActivity>;
    static const Settings<SimulatedActivity> table{
        {"idle-seconds", C::seconds(&A::m_idleTime, 0, 86'400), 300,
            "how long the phone stays active before it goes to standby by itself; 0 for ever", {},
            {.fixed = 0}},
        {"state", C::words(&A::m_isUsed, activityWords()).by(&A::setUsed), QStringLiteral("active"),
            "whether somebody uses the phone",
            eachWord({{"active", "somebody uses the phone"}, {"standby", "nobody uses the phone any more"}}),
            {"state"}},
    };
    return table;
}

SimulatedActivity::SimulatedActivity(const JsonNode &section, SimulatedParts &phone) : m_idle(phone.clock())
{
    read(section, settings({}), {Others});
    readOthers(section.map(Others));
    connect(&m_idle, &PhoneTimer::timeout, this, [this] {
        m_isUsed = false;
        update();
    });
    update();
}

void SimulatedActivity::readOthers(const JsonNode &others)
{
    for (const auto &[name, node] : others.members()) {
        const QString value = others.text(name, {});
        if (name == UserActivity)
            others.fail(QStringLiteral("that status is what 'state' says"), name);
        if (const QString fault = faultOf(value); !fault.isEmpty())
            others.fail(fault, name);
        m_others.insert(name, value);
    }
}

std::vector<SimVerb> SimulatedActivity::verbs(const QString &instance)
{
    std::vector<SimVerb> verbs = SimulatedPart::verbs(instance);
    verbs.push_back({QStringLiteral("status"), {QStringLiteral("NAME"), QStringLiteral("VALUE")},
        QStringLiteral("sets a status of the power manager, known or new"), [this](const QStringList &words) {
            if (const QString fault = faultOf(words[1]); !fault.isEmpty())
                throw Error(fault);
            if (words[0] == UserActivity && valueOf(activityWords(), words[1]))
                setUsed(words[1]);
            else
                m_others.insert(words[0], words[1]);
            update();
        }});
    return verbs;
}

QVariantMap SimulatedActivity::saved()
{
    QVariantMap others;
    for (auto other = m_others.cbegin(); other != m_others.cend(); ++other)
        others.insert(other.key(), other.value());
    QVariantMap saved = SimulatedPart::saved();
    saved.insert(Others, others);
    return saved;
}

void SimulatedActivity::restore(const QVariantMap &saved)
{
    const QVariantMap others = saved.value(Others).toMap();
    for (auto other = others.cbegin(); other != others.cend(); ++other)
        m_others.insert(other.key(), other.value().toString());
    SimulatedPart::restore(saved);
}

// Each time that somebody uses the phone, the time until nobody does begins anew.
void SimulatedActivity::setUsed(const QString &word)
{
    m_isUsed = *valueOf(activityWords(), word);
    m_others.remove(UserActivity);
    m_idle.stop();
    if (m_isUsed && m_idleTime.count() > 0)
        m_idle.start(m_idleTime);
}

void SimulatedActivity::update()
{
    save();
    know({m_isUsed, m_others});
}

} // namespace oz::services
