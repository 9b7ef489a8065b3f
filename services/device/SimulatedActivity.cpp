#include "device/SimulatedActivity.hpp"

#include "publishing/Error.hpp"

namespace oz::services {

namespace {

const QString Active = QStringLiteral("active");
const QString Standby = QStringLiteral("standby");
const QString Others = QStringLiteral("others");
// A client reads 255 bytes at a time, and loses a line that two reads cut. Up to two lines wait for it.
constexpr int MaxValueSize = 120;

// What is wrong with a value; nothing where it is one.
QString faultOf(const QString &value)
{
    if (value.contains(u'\n'))
        return QStringLiteral("a status is one line");
    return value.toUtf8().size() > MaxValueSize ? QStringLiteral("a status has at most 120 bytes")
                                                : QString();
}

} // namespace

SimulatedActivity::SimulatedActivity(const JsonNode &section, SimulatedPhone &phone) : m_idle(phone.clock())
{
    section.allowOnly(
        {QStringLiteral("state"), QStringLiteral("idle-seconds"), QStringLiteral("other-statuses")});
    const JsonNode others = section.map(QStringLiteral("other-statuses"));
    for (const auto &[name, node] : others.members()) {
        const QString value = others.text(name, {});
        if (name == UserActivity)
            others.fail(QStringLiteral("that status is what 'state' says"), name);
        if (const QString fault = faultOf(value); !fault.isEmpty())
            others.fail(fault, name);
        m_state.others.insert(name, value);
    }
    m_idleTime = section.seconds(QStringLiteral("idle-seconds"), 300, 0, 86'400);
    connect(&m_idle, &PhoneTimer::timeout, this, [this] { become(false); });
    become(section.word(QStringLiteral("state"), Active, {Active, Standby}) == Active);
}

std::vector<SimVerb> SimulatedActivity::verbs(const QString &)
{
    return {
        SimVerb::state(
            Active, QStringLiteral("somebody uses the phone"), [this] { become(true); },
            [this] { return *m_state.isUsed; }),
        SimVerb::state(
            Standby, QStringLiteral("nobody uses the phone any more"), [this] { become(false); },
            [this] { return !*m_state.isUsed; }),
        {QStringLiteral("status"), {QStringLiteral("NAME"), QStringLiteral("VALUE")},
            QStringLiteral("sets a status of the power manager, known or new"),
            [this](const QStringList &words) {
                if (const QString fault = faultOf(words[1]); !fault.isEmpty())
                    throw Error(fault);
                if (words[0] == UserActivity && (words[1] == Active || words[1] == Standby))
                    return become(words[1] == Active);
                m_state.others.insert(words[0], words[1]);
                tell();
            }},
    };
}

QVariantMap SimulatedActivity::saved() const
{
    QVariantMap others;
    for (auto other = m_state.others.cbegin(); other != m_state.others.cend(); ++other)
        others.insert(other.key(), other.value());
    return {{Active, *m_state.isUsed}, {Others, others}};
}

void SimulatedActivity::restore(const QVariantMap &saved)
{
    become(saved.value(Active).toBool());
    const QVariantMap others = saved.value(Others).toMap();
    for (auto other = others.cbegin(); other != others.cend(); ++other)
        m_state.others.insert(other.key(), other.value().toString());
    tell();
}

void SimulatedActivity::become(bool isUsed)
{
    m_state.isUsed = isUsed;
    m_state.others.remove(UserActivity);
    m_idle.stop();
    if (isUsed && m_idleTime.count() > 0)
        m_idle.start(m_idleTime);
    tell();
}

void SimulatedActivity::tell()
{
    save();
    know(m_state);
}

} // namespace oz::services
