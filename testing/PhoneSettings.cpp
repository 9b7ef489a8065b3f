#include <oz/testing/PhoneSettings.hpp>

#include "PhoneWords.hpp"

#include <oz/testing/PhoneError.hpp>

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonValue>

#include <algorithm>

namespace oz::testing {

namespace {

const QStringList Displays{QStringLiteral("display"), QStringLiteral("displays")};

using Entries = QList<std::pair<QStringList, QVariant>>;

QByteArray jsonOf(const QVariant &value)
{
    return QJsonDocument(QJsonArray{QJsonValue::fromVariant(value)})
        .toJson(QJsonDocument::Compact)
        .sliced(1)
        .chopped(1);
}

// The entries whose paths begin with \a path, as a map or, for the displays, as a list.
QByteArray textOf(const Entries &entries, const QStringList &path)
{
    const bool isList = path == Displays;
    QList<QByteArray> members;
    QStringList known;
    for (const auto &[place, value] : entries) {
        if (place.size() <= path.size() || place.first(path.size()) != path
            || known.contains(place[path.size()]))
            continue;
        const QString &name = place[path.size()];
        known.append(name);
        const QByteArray text =
            place.size() == path.size() + 1 ? jsonOf(value) : textOf(entries, path + QStringList{name});
        members.append(isList ? text : jsonOf(name) + ": " + text);
    }
    // A line each, which errors name.
    const QByteArray indent = '\n' + QByteArray(4 * path.size(), ' ');
    const QByteArray inside = indent + "    " + members.join(',' + indent + "    ") + indent;
    return isList ? '[' + inside + ']' : '{' + inside + '}';
}

} // namespace

void SettingsSection::put(const char *key, const QVariant &value)
{
    m_settings->setValue(m_path + QStringList{QLatin1String(key)}, value);
}

void SettingsSection::append(const char *key, const QVariant &value)
{
    const QStringList path = m_path + QStringList{QLatin1String(key)};
    m_settings->setValue(path, m_settings->value(path).toList() + QVariantList{value});
}

BatterySettings &BatterySettings::condition(device::BatteryCondition::Type condition)
{
    return set("condition", PhoneWords::of(condition));
}

BatterySettings &BatterySettings::temperature(std::optional<double> celsius)
{
    return set("temperature", orNull(celsius));
}

ActivitySettings &ActivitySettings::state(device::UserActivityState::Type state)
{
    return set("state", PhoneWords::of(state));
}

OrientationSettings &OrientationSettings::orientation(
    std::optional<device::DeviceOrientation::Type> orientation)
{
    return set("orientation", orientation ? PhoneWords::of(*orientation) : QStringLiteral("undefined"));
}

DisplaySettings &DisplaySettings::size(const QSize &pixels)
{
    put("width", pixels.width());
    return set("height", pixels.height());
}

DisplaySettings &DisplaySettings::physicalSize(const QSize &millimetres)
{
    put("mm-width", millimetres.width());
    return set("mm-height", millimetres.height());
}

DisplaySettings &DisplaySettings::technology(device::DisplayTechnology::Type technology)
{
    return set("technology", PhoneWords::of(technology));
}

HardwareSettings &HardwareSettings::hdmi(device::HdmiConnector::Type connector)
{
    const bool isKnown = connector != device::HdmiConnector::Unknown;
    return set("hdmi", orNull(isKnown ? std::optional(PhoneWords::of(connector)) : std::nullopt));
}

HardwareSettings &HardwareSettings::addProcessor(const QString &model, int megahertz)
{
    append("processors", QVariantMap{{QStringLiteral("model"), model}, {QStringLiteral("mhz"), megahertz}});
    return *this;
}

SimCardSettings &SimCardSettings::state(device::SimCardState::Type state)
{
    return set("state", PhoneWords::of(state));
}

RadioSettings &RadioSettings::technologies(device::CellularTechnology::Types technologies)
{
    return set("technologies", PhoneWords::of(technologies));
}

RadioSettings &RadioSettings::enabledTechnologies(device::CellularTechnology::Types technologies)
{
    return set("enabled-technologies", PhoneWords::of(technologies));
}

RadioSettings &RadioSettings::services(device::CellularService::Types services)
{
    return set("services", PhoneWords::of(services));
}

NetworkSettings &NetworkSettings::technology(device::CellularTechnology::Type technology)
{
    return set("technology", PhoneWords::of(technology));
}

NetworkSettings &NetworkSettings::services(device::CellularService::Types services)
{
    return set("services", PhoneWords::of(services));
}

ProfileSettings &ProfileSettings::controlMode(int mode)
{
    return set("control-mode", QStringLiteral("%1").arg(mode, 4, 8, QLatin1Char('0')));
}

PeerSettings &PeerSettings::wps(const QList<device::WiFiDirectWpsMethod::Type> &methods)
{
    QStringList words;
    for (const auto method : methods)
        words.append(PhoneWords::of(method));
    return set("wps", words);
}

PeerSettings &PeerSettings::intent(device::WiFiDirectIntent::Type intent)
{
    return set("intent", PhoneWords::of(intent));
}

PeerSettings &PeerSettings::group(device::WiFiDirectRole::Type role)
{
    return set("group", PhoneWords::of(role));
}

SinkSettings &SinkSettings::size(const QSize &pixels)
{
    put("width", pixels.width());
    return set("height", pixels.height());
}

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

DisplaySettings PhoneSettings::display(int id)
{
    // By their identifiers, until they become a list.
    const QString key = QString::number(id);
    setValue(Displays + QStringList{key, QStringLiteral("id")}, id);
    return at("display", "displays", key);
}

void PhoneSettings::setServing(const QStringList &networks)
{
    setValue({QStringLiteral("cellular-network"), QStringLiteral("serving")}, networks);
}

void PhoneSettings::setConnectTime(std::chrono::duration<double> time)
{
    setValue({QStringLiteral("data-profile"), QStringLiteral("connect-seconds")}, time.count());
}

QByteArray PhoneSettings::text() const
{
    return m_content.isEmpty() ? m_text : textOf(m_content, {}) + '\n';
}

QVariant PhoneSettings::value(const QStringList &path) const
{
    const auto entry = std::find_if(
        m_content.begin(), m_content.end(), [&](const auto &each) { return each.first == path; });
    return entry == m_content.end() ? QVariant() : entry->second;
}

void PhoneSettings::setValue(const QStringList &path, const QVariant &value)
{
    if (!m_text.isEmpty())
        throw PhoneError(
            path.join(u'.') + QLatin1String(" cannot be set: the phone is as the text of its file says"));
    const auto entry = std::find_if(
        m_content.begin(), m_content.end(), [&](const auto &each) { return each.first == path; });
    if (entry == m_content.end())
        m_content.append({path, value});
    else
        entry->second = value;
}

} // namespace oz::testing
