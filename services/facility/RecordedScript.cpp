#include "facility/RecordedScript.hpp"

#include "facility/Facility.hpp"
#include "publishing/Tree.hpp"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace oz::services {

RecordedScript::RecordedScript(const Tree &tree, bool keepsIdentifiers)
    : m_tree(tree), m_keepsIdentifiers(keepsIdentifiers)
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
    QJsonObject step;
    step.insert(QStringLiteral("at"), m_isBeginning ? 0 : double(m_clock.elapsed()) / 1000);
    // As text where that is the same words again.
    const QString text = words.join(u' ');
    if (text.split(u' ') == words && !text.contains(u'"') && !text.contains(QLatin1String("${")))
        step.insert(QStringLiteral("sim"), text);
    else
        step.insert(QStringLiteral("sim"), QJsonArray::fromStringList(words));
    m_steps.append(QString::fromUtf8(QJsonDocument(step).toJson(QJsonDocument::Compact)));
}

void RecordedScript::setInPhone(const QString &facility, const QString &key, const QVariant &value)
{
    QVariantMap section = this->section(facility);
    section.insert(key, value);
    m_phone.insert(facility, section);
}

QString RecordedScript::masked(const QString &kind, const QString &text)
{
    if (m_keepsIdentifiers || text.isEmpty())
        return text;
    m_hasMasked = true;
    QStringList &known = m_masked[kind];
    if (!known.contains(text))
        known.append(text);
    return kind + u'-' + QString::number(known.indexOf(text) + 1);
}

QString RecordedScript::maskedAddress(const QString &address)
{
    if (m_keepsIdentifiers || address.isEmpty())
        return address;
    const int number = masked(QStringLiteral("address"), address.toLower()).section(u'-', -1).toInt();
    return QStringLiteral("02:00:5e:00:%1:%2")
        .arg(number / 256, 2, 16, QLatin1Char('0'))
        .arg(number % 256, 2, 16, QLatin1Char('0'));
}

int RecordedScript::maskedNumber(const QString &kind, int number)
{
    return m_keepsIdentifiers ? number : masked(kind, QString::number(number)).section(u'-', -1).toInt();
}

QString RecordedScript::maskedDigits(const QString &digits, qsizetype kept)
{
    if (m_keepsIdentifiers)
        return digits;
    m_hasMasked = true;
    return digits.left(kept).leftJustified(digits.size() - 1, u'0') + u'1';
}

QString RecordedDevices::note(RecordedScript &script, const QString &address, const QVariantMap &told)
{
    QString &name = m_names[address.toLower()];
    if (name.isEmpty()) {
        name = QStringLiteral("%1-%2").arg(m_kind).arg(m_devices.size() + 1);
        m_devices.insert(name,
            QVariantMap{{QStringLiteral("name"),
                            script.masked(m_kind, told.value(QStringLiteral("name")).toString())},
                {QStringLiteral("address"), script.maskedAddress(address)},
                {QStringLiteral("type"), told.value(QStringLiteral("type")).toString()},
                {QStringLiteral("in-range"), false}});
    }
    return name;
}

} // namespace oz::services
