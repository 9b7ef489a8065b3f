#include "facility/RecordedScript.hpp"

#include "facility/Facility.hpp"
#include "publishing/Tree.hpp"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace oz::services {

namespace {

constexpr QLatin1String Variable("${");

} // namespace

RecordedScript::RecordedScript(const Tree &tree, bool keepsIdentifiers)
    : m_tree(tree), m_mask(keepsIdentifiers)
{
    m_clock.start();
}

QVariantMap RecordedScript::told(const QString &path) const
{
    return m_tree.told(path);
}

QVariant RecordedScript::value(const QString &name) const
{
    static const QHash<QString, const Field *> fields = [] {
        QHash<QString, const Field *> all;
        for (const Facility &facility : facilities()) {
            for (const Field &field : facility.fields)
                all.insert(field.fullName(facility.name), &field);
        }
        return all;
    }();
    const Field *field = fields.value(name);
    return field ? field->in(told(field->path)) : QVariant();
}

void RecordedScript::order(const QStringList &words)
{
    // As text where that is the same words again.
    const QString text = words.join(u' ');
    const bool isText = text.split(u' ') == words && !text.contains(u'"') && !text.contains(Variable);
    append(QStringLiteral("sim"), isText ? QJsonValue(text) : QJsonArray::fromStringList(words));
}

void RecordedScript::say(const QString &line)
{
    // It names no variables.
    append(QStringLiteral("say"), QString(line).replace(Variable, QLatin1String("$ {")));
}

void RecordedScript::append(const QString &key, const QJsonValue &value)
{
    const QJsonObject step{
        {QStringLiteral("at"), m_isBeginning ? 0 : double(m_clock.elapsed()) / 1000}, {key, value}};
    m_steps.append(QString::fromUtf8(QJsonDocument(step).toJson(QJsonDocument::Compact)));
}

void RecordedScript::setInPhone(const QString &facility, const QString &key, const QVariant &value)
{
    QVariantMap section = this->section(facility);
    section.insert(key, value);
    m_phone.insert(facility, section);
}

QString RecordedDevices::note(RecordedScript &script, const QString &address, const QVariantMap &told)
{
    QString &name = m_names[address.toLower()];
    if (name.isEmpty()) {
        name = QStringLiteral("%1-%2").arg(m_kind).arg(m_devices.size() + 1);
        m_devices.insert(name,
            QVariantMap{{QStringLiteral("name"),
                            script.mask().text(m_kind, told.value(QStringLiteral("name")).toString())},
                {QStringLiteral("address"), script.mask().address(address)},
                {QStringLiteral("type"), told.value(QStringLiteral("type")).toString()},
                {QStringLiteral("in-range"), false}});
    }
    return name;
}

} // namespace oz::services
