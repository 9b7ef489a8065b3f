#include "ozdevice/LiveFacility.hpp"

#include "meta/MetaDescription.hpp"
#include "meta/MetaText.hpp"

#include <algorithm>

namespace oz::tools {

namespace {

constexpr std::chrono::milliseconds HighlightTime{3000};

const LiveFacility::Value *find(const std::vector<LiveFacility::Value> &values, const QString &name)
{
    const auto found = std::find_if(
        values.begin(), values.end(), [&](const LiveFacility::Value &value) { return value.name == name; });
    return found == values.end() ? nullptr : &*found;
}

} // namespace

LiveFacility::LiveFacility(
    const FacilityEntry &entry, const QString &selected, const std::function<void()> &onChange)
    : m_instance(entry, selected, FacilityInstance::MayAppear)
{
    const auto changed = [this, onChange] {
        update();
        onChange();
    };
    m_tap = std::make_unique<meta::SignalTap>(
        m_instance.object(), [changed](const QMetaMethod &, const QVariantList &) { changed(); });
    // If an object of the class knows its own requests alone, the tree shows those of all processes.
    for (const QString &path : entry.activity.isEmpty() ? QStringList() : entry.objects + entry.activity) {
        if (path != entry.calls.service)
            subscribe(path, changed);
    }
    m_values = read();
}

void LiveFacility::subscribe(const QString &path, const std::function<void()> &onChange)
{
    auto object = std::make_unique<PpsObject>(path);
    if (!object->open(PpsOpenMode::Subscribe))
        return;
    QObject::connect(object.get(), &PpsObject::readyRead, onChange);
    m_objects.push_back(std::move(object));
}

void LiveFacility::poll()
{
    const auto &refresh = m_instance.entry().refresh;
    if (!refresh)
        return;
    (void)refresh(m_instance.object());
    update();
}

void LiveFacility::update()
{
    const std::vector<Value> before = std::exchange(m_values, read());
    for (Value &value : m_values) {
        const Value *old = find(before, value.name);
        const bool hasChanged = !old || old->text != value.text;
        value.highlight = hasChanged ? QDeadlineTimer(HighlightTime) : old->highlight;
    }
}

std::vector<LiveFacility::Value> LiveFacility::read() const
{
    std::vector<Value> values;
    for (const auto &object : m_objects) {
        const QVariantMap message = PpsObject::decode(object->read());
        const QVariantMap attributes = message.isEmpty() ? QVariantMap() : message.first().toMap();
        for (auto attribute = attributes.cbegin(); attribute != attributes.cend(); ++attribute)
            values.push_back({attribute.key(), meta::valueText(*attribute), {}});
    }
    const FacilityEntry &entry = m_instance.entry();
    for (const QMetaProperty &property : meta::propertiesOf(entry.type)) {
        const QString name = QString::fromLatin1(property.name());
        const QString text = meta::valueText(property.read(m_instance.object()));
        const Measure measure = entry.measures.value(name);
        values.push_back({name, text, text == measure.unknown ? QString() : measure.unit});
    }
    return values;
}

std::vector<LiveFacility::Value> LiveFacility::glance() const
{
    const QStringList &names = m_instance.entry().glance;
    std::vector<Value> values;
    for (const QString &name : names) {
        if (const Value *value = find(m_values, name))
            values.push_back(*value);
    }
    std::copy_if(m_values.begin(), m_values.end(), std::back_inserter(values),
        [&](const Value &value) { return value.isFresh() && !names.contains(value.name); });
    return values;
}

} // namespace oz::tools
