#include <oz/testing/PhoneSettings.hpp>

#include <oz/testing/PhoneError.hpp>

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonValue>

#include <algorithm>

namespace oz::testing {

namespace {

using Entries = QList<std::pair<QStringList, QVariant>>;

QByteArray jsonOf(const QVariant &value)
{
    return QJsonDocument(QJsonArray{QJsonValue::fromVariant(value)})
        .toJson(QJsonDocument::Compact)
        .sliced(1)
        .chopped(1);
}

// The entries whose paths begin with \a path, as a map.
QByteArray textOf(const Entries &entries, const QStringList &path)
{
    QList<QByteArray> members;
    QStringList known;
    for (const auto &[place, value] : entries) {
        if (place.size() <= path.size() || place.first(path.size()) != path
            || known.contains(place[path.size()]))
            continue;
        const QString &name = place[path.size()];
        known.append(name);
        members.append(jsonOf(name) + ": "
            + (place.size() == path.size() + 1 ? jsonOf(value) : textOf(entries, path + QStringList{name})));
    }
    // One line per key, so that errors can name the line.
    const QByteArray indent = '\n' + QByteArray(4 * path.size(), ' ');
    return '{' + indent + "    " + members.join(',' + indent + "    ") + indent + '}';
}

} // namespace

PhoneSettings PhoneSettings::fromText(const QByteArray &text)
{
    PhoneSettings settings;
    settings.m_text = text;
    return settings;
}

PhoneSettings PhoneSettings::fromFile(const QString &file)
{
    QFile content(file);
    if (!content.open(QIODevice::ReadOnly))
        throw PhoneError(file + QLatin1String(": ") + content.errorString());
    return fromText(content.readAll());
}

PhoneSettings &PhoneSettings::set(const QString &path, const QVariant &value)
{
    if (!m_text.isEmpty())
        throw PhoneError(path + QLatin1String(" cannot be set: the phone is as the text of its file says"));
    const QStringList keys = path.split(u'.');
    const auto entry = std::find_if(
        m_content.begin(), m_content.end(), [&](const auto &each) { return each.first == keys; });
    if (entry == m_content.end())
        m_content.append({keys, value});
    else
        entry->second = value;
    return *this;
}

QByteArray PhoneSettings::text() const
{
    return m_content.isEmpty() ? m_text : textOf(m_content, {}) + '\n';
}

} // namespace oz::testing
