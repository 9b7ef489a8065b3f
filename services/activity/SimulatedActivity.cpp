#include "activity/SimulatedActivity.hpp"

#include "core/Error.hpp"

namespace oz::services {

namespace {

const QString UserActivity = QStringLiteral("user_activity");
const QString Active = QStringLiteral("active");
const QString Standby = QStringLiteral("standby");

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

SimulatedActivity::SimulatedActivity(const JsonNode &section)
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
        m_statuses.insert(name, value);
    }
    m_idle.setSingleShot(true);
    m_idle.setInterval(section.seconds(QStringLiteral("idle-seconds"), 300, 0, 86'400));
    connect(&m_idle, &QTimer::timeout, this, [this] { become(Standby); });
    become(section.word(QStringLiteral("state"), Active, {Active, Standby}));
}

std::vector<SimVerb> SimulatedActivity::verbs(const QString &)
{
    return {
        {Active, {}, QStringLiteral("somebody uses the phone"),
            [this](const QStringList &) { become(Active); }},
        {Standby, {}, QStringLiteral("nobody uses the phone any more"),
            [this](const QStringList &) { become(Standby); }},
        {QStringLiteral("status"), {QStringLiteral("NAME"), QStringLiteral("VALUE")},
            QStringLiteral("sets a status of the power manager, known or new"),
            [this](const QStringList &words) {
                if (const QString fault = faultOf(words[1]); !fault.isEmpty())
                    throw Error(fault);
                m_statuses.insert(words[0], words[1]);
                Q_EMIT changed();
            }},
    };
}

void SimulatedActivity::become(const QString &state)
{
    m_statuses.insert(UserActivity, state);
    m_idle.stop();
    if (state == Active && m_idle.interval() > 0)
        m_idle.start();
    Q_EMIT changed();
}

} // namespace oz::services
