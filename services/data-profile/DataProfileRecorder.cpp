#include "data-profile/DataProfileRecorder.hpp"

#include "data-profile/DataProfiles.hpp"

namespace oz::services {

namespace {

const QString Section = QStringLiteral("data-profile");
const QString Enabled = QStringLiteral("enabled");

// The section of a profile in the phone's file.
QVariantMap sectionOf(const QVariantMap &told, const QString &name)
{
    static const QStringList keys{
        Enabled, QStringLiteral("always-on"), QStringLiteral("access-controlled"), QStringLiteral("apn")};
    QVariantMap section;
    for (const Field &field : dataProfileFields().fields()) {
        const QString key = field.name.section(u'.', 1);
        const QVariant value = field.in(told, name);
        if (keys.contains(key) && value.isValid())
            section.insert(key, value);
    }
    return section;
}

} // namespace

void DataProfileRecorder::sample(RecordedScript &script, const QStringList &)
{
    const QVariantMap told = script.told(dataProfileFields().path());
    QVariantMap profiles;
    for (auto attribute = told.cbegin(); attribute != told.cend(); ++attribute) {
        if (attribute->typeId() != QMetaType::QVariantMap)
            continue;
        const QString &name = attribute.key();
        const bool isEnabled = attribute->toMap().value(Enabled).toBool();
        if (script.isBeginning()) {
            profiles.insert(name, sectionOf(told, name));
            m_enabled.insert(name, isEnabled);
        } else if (const auto known = m_enabled.find(name); known != m_enabled.end() && *known != isEnabled) {
            *known = isEnabled;
            script.order({Section, name, Enabled, isEnabled ? QStringLiteral("on") : QStringLiteral("off")});
        }
    }
    if (!profiles.isEmpty())
        script.setInPhone(Section, QStringLiteral("profiles"), profiles);
}

} // namespace oz::services
