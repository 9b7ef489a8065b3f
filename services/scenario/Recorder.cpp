#include "scenario/Recorder.hpp"

#include "facility/Facility.hpp"
#include "phone/SimVerb.hpp"
#include "publishing/Tree.hpp"

#include <algorithm>
#include <cmath>

namespace oz::services {

namespace {

constexpr qsizetype ShortestIdentifier = 6; // an IMSI of few digits

// The order that gives \a setting the value.
QStringList wordsFor(const Setting &setting, const QVariant &value)
{
    for (const Order &order : setting.orders) {
        if (order.argument.isEmpty() && order.value == value)
            return {order.verb};
        if (order.argument.startsWith(u'[') && value.toString().isEmpty())
            return {order.verb};
        if (!order.argument.isEmpty())
            return {order.verb, setting.type.toArgument(value)};
    }
    return {};
}

bool isRecorded(const Facility &facility)
{
    return facility.recorder
        || std::any_of(facility.settings.begin(), facility.settings.end(),
            [](const Setting &setting) { return setting.recording.isSome(); });
}

} // namespace

QStringList Recorder::facilities()
{
    QStringList names;
    for (const Facility &facility : services::facilities()) {
        if (isRecorded(facility))
            names.append(facility.name);
    }
    return names;
}

Recorder::Recorder(
    const Tree &tree, const QStringList &facilities, bool keepsIdentifiers, const SinkNames &sinkNames)
    : m_script(tree, keepsIdentifiers), m_facilities(facilities), m_sinkNames(sinkNames)
{
    const QStringList known = Recorder::facilities();
    for (const QString &facility : facilities) {
        if (!known.contains(facility)) {
            throw WrongOrder(facility + QLatin1String(" cannot be recorded; what can is ")
                + known.join(QLatin1String(", ")));
        }
    }
    for (const Facility &facility : services::facilities()) {
        if (m_facilities.contains(facility.name) && facility.recorder)
            m_recorders.push_back(facility.recorder());
    }
    sample();
    // Objects that change together are one change: they are read once all of them have followed.
    connect(&tree, &Tree::toldAnew, this, [this] {
        if (!std::exchange(m_isPlanned, true))
            QMetaObject::invokeMethod(
                this, [this] { sample(); }, Qt::QueuedConnection);
    });
}

void Recorder::sample()
{
    m_isPlanned = false;
    for (const Facility &facility : services::facilities()) {
        if (m_facilities.contains(facility.name))
            recordSettings(facility);
    }
    for (const auto &recorder : m_recorders)
        recorder->sample(m_script, m_facilities);
    if (m_sinkNames)
        recordSources();
    m_script.endBeginning();
}

// A source that goes or comes back explains what happens to the values.
void Recorder::recordSources()
{
    const QVariantMap sources = m_script.told(QStringLiteral("/pps/system/ozdeviced/status"))
                                    .value(QStringLiteral("facilities"))
                                    .toMap();
    for (auto source = sources.cbegin(); source != sources.cend(); ++source) {
        const QVariantMap told = source->toMap();
        if (m_sources.value(source.key()) == told)
            continue;
        m_sources.insert(source.key(), told);
        if (m_script.isBeginning())
            continue;
        const auto text = [&told](const char *key) { return told.value(QLatin1String(key)).toString(); };
        QString line = source.key() + QLatin1String(": the source ") + text("source");
        if (text("state") != text("source")) // as with none
            line += QLatin1String(" is ") + text("state");
        if (const QString reason = text("reason"); !reason.isEmpty())
            line += QLatin1String(": ") + reason;
        m_script.say(masked(line));
    }
}

QString Recorder::masked(const QString &line)
{
    if (m_sinkNames) {
        for (const QString &name : m_sinkNames())
            (void)m_script.mask().text(QStringLiteral("sink"), name);
        noteIdentifiers();
    }
    return m_script.mask().line(line);
}

// Serial numbers and the like, which have no form of their own.
void Recorder::noteIdentifiers()
{
    for (const Facility &facility : services::facilities()) {
        for (const Field &field : facility.fields) {
            if (!field.type.isPrivate)
                continue;
            // The mask finds an address by its form, and a short number may stand for anything.
            const QString value = m_script.value(field.fullName(facility.name)).toString();
            if (value.size() >= ShortestIdentifier && !value.contains(u':'))
                (void)m_script.mask().text(QStringLiteral("id"), value);
        }
    }
}

// The value of \a setting that would give what is seen; nothing where that is not seen.
std::optional<QVariant> Recorder::valueSeen(const Facility &facility, const Setting &setting)
{
    const SeenValues seen = [&](const char *field) {
        return m_script.value(facility.name + u'.' + QLatin1String(field));
    };
    const Recording &recording = setting.recording;
    std::optional<QVariant> value;
    if (recording.fixed.isValid())
        value = recording.fixed;
    else if (recording.value)
        value = recording.value(seen);
    else if (const QVariant field = seen(recording.field); field.isValid())
        value = field;
    if (value && value->isValid() && setting.type.isWhole)
        value = std::round(value->toDouble());
    if (value)
        value = setting.type.accept(*value);
    if (setting.type.isPrivate && !*recording.mask && recording.keptDigits < 0)
        return std::nullopt;
    if (value && *recording.mask)
        value = m_script.mask().text(QLatin1String(recording.mask), value->toString());
    if (value && recording.keptDigits >= 0)
        value = m_script.mask().digits(value->toString(), recording.keptDigits);
    return value;
}

void Recorder::recordSettings(const Facility &facility)
{
    for (const Setting &setting : facility.settings) {
        const auto value = valueSeen(facility, setting);
        const QString name = facility.name + u'.' + setting.key;
        if (!value || (m_recorded.contains(name) && m_recorded.value(name) == *value))
            continue;
        m_recorded.insert(name, *value);
        if (!setting.orders.empty())
            m_script.order(QStringList{facility.name} + wordsFor(setting, *value));
        else if (!m_script.section(facility.name).contains(setting.key))
            m_script.setInPhone(facility.name, setting.key, *value);
    }
}

} // namespace oz::services
