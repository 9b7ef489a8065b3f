#include "scenario/Recorder.hpp"

#include "cellular/Cellular.hpp"
#include "facility/Facility.hpp"
#include "scenario/PublicValues.hpp"
#include "source/Error.hpp"
#include "publishing/Tree.hpp"
#include "phone/SimVerb.hpp"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <cmath>

namespace oz::services {

namespace {

const QString Profiles = QStringLiteral("/pps/services/cds/cnice/status");

struct CellKey
{
    QString key; // in the phone's file
    QString attribute; // in the tree
    QString technologies; // that the phone's file has it for
};

// What tells where a cell is.
const QList<CellKey> CellKeys{
    {QStringLiteral("cell-id"), QStringLiteral("cell_id"), QStringLiteral("gsm umts lte")},
    {QStringLiteral("lac"), QStringLiteral("lac"), QStringLiteral("gsm umts")},
    {QStringLiteral("tac"), QStringLiteral("tac"), QStringLiteral("lte")},
    {QStringLiteral("bid"), QStringLiteral("bid"), QStringLiteral("cdma_1x evdo")},
    {QStringLiteral("nid"), QStringLiteral("nid"), QStringLiteral("cdma_1x evdo")},
    {QStringLiteral("sid"), QStringLiteral("sid"), QStringLiteral("cdma_1x evdo")}};

QString numberText(const QVariant &value)
{
    return QString::number(value.toDouble(), 'g', 10);
}

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

QVariantMap displayOf(int id, const DisplayTree::Display &display)
{
    static const QStringList technologies{QStringLiteral("unknown"), QStringLiteral("crt"),
        QStringLiteral("lcd"), QStringLiteral("plasma"), QStringLiteral("led"), QStringLiteral("oled")};
    return {{QStringLiteral("id"), id}, {QStringLiteral("name"), display.name},
        {QStringLiteral("kind"),
            display.detachable ? QStringLiteral("external") : QStringLiteral("internal")},
        {QStringLiteral("attached"), display.attached}, {QStringLiteral("detachable"), display.detachable},
        {QStringLiteral("width"), display.size.width()}, {QStringLiteral("height"), display.size.height()},
        {QStringLiteral("mm-width"), display.physicalSize.width()},
        {QStringLiteral("mm-height"), display.physicalSize.height()},
        {QStringLiteral("rotation"), display.rotation},
        {QStringLiteral("technology"), technologies.value(display.technology, technologies.first())}};
}

} // namespace

QStringList Recorder::facilities()
{
    return {QStringLiteral("sdcard"), QStringLiteral("battery"), QStringLiteral("activity"),
        QStringLiteral("orientation"), QStringLiteral("hardware"), QStringLiteral("display"),
        QStringLiteral("simcard"), QStringLiteral("radio"), QStringLiteral("cellular-network"),
        QStringLiteral("data-profile"), QStringLiteral("wifi-direct"), QStringLiteral("miracast")};
}

Recorder::Recorder(const Tree &tree, const QStringList &facilities, bool keepsIdentifiers)
    : m_tree(tree), m_facilities(facilities), m_keepsIdentifiers(keepsIdentifiers)
{
    for (const QString &facility : facilities) {
        if (!Recorder::facilities().contains(facility)) {
            throw WrongOrder(facility + QLatin1String(" cannot be recorded; what can is ")
                + Recorder::facilities().join(QLatin1String(", ")));
        }
    }
    m_clock.start();
    sample();
    // What changes together is one change, and no object is looked at before the others follow.
    connect(&tree, &Tree::toldAnew, this, [this] {
        if (!std::exchange(m_isPlanned, true))
            QMetaObject::invokeMethod(
                this, [this] { sample(); }, Qt::QueuedConnection);
    });
}

QVariantMap Recorder::phone() const
{
    QVariantMap phone = m_phone;
    if (!m_networks.isEmpty()) {
        QVariantMap networks;
        for (const auto &[network, name] : m_networks)
            networks.insert(name, network);
        QVariantMap section = phone.value(QStringLiteral("cellular-network")).toMap();
        section.insert(QStringLiteral("networks"), networks);
        phone.insert(QStringLiteral("cellular-network"), section);
    }
    return phone;
}

void Recorder::sample()
{
    static const QList<std::pair<QString, void (Recorder::*)()>> all{
        {QStringLiteral("display"), &Recorder::recordDisplay},
        {QStringLiteral("cellular-network"), &Recorder::recordNetwork},
        {QStringLiteral("data-profile"), &Recorder::recordDataProfile},
        {QStringLiteral("wifi-direct"), &Recorder::recordWiFiDirect},
        {QStringLiteral("miracast"), &Recorder::recordMiracast}};
    m_isPlanned = false;
    m_now.clear();
    for (const PublicValue &value : publicValues()) {
        if (!value.name.contains(u'*'))
            m_now.insert(value.name, PublicValueUse{value.field, {}}.now(m_tree));
    }
    for (const Facility &facility : services::facilities()) {
        if (m_facilities.contains(facility.name))
            recordSettings(facility);
    }
    for (const auto &[facility, record] : all) {
        if (m_facilities.contains(facility))
            (this->*record)();
    }
    m_before = m_now;
    m_isFirst = false;
}

bool Recorder::isNew(const QString &name) const
{
    const QVariant value = now(name);
    return value.isValid() && value != m_before.value(name);
}

void Recorder::order(const QStringList &words)
{
    QJsonObject step;
    step.insert(QStringLiteral("at"), m_isFirst ? 0 : double(m_clock.elapsed()) / 1000);
    // As text where that is the same words again.
    const QString text = words.join(u' ');
    if (text.split(u' ') == words && !text.contains(u'"') && !text.contains(QLatin1String("${")))
        step.insert(QStringLiteral("sim"), text);
    else
        step.insert(QStringLiteral("sim"), QJsonArray::fromStringList(words));
    m_steps.append(QString::fromUtf8(QJsonDocument(step).toJson(QJsonDocument::Compact)));
}

void Recorder::orderOnOff(const QString &name, const QStringList &begin)
{
    if (isNew(name))
        order(begin + QStringList{isTrue(name) ? QStringLiteral("on") : QStringLiteral("off")});
}

QString Recorder::masked(const QString &kind, const QString &text)
{
    if (m_keepsIdentifiers || text.isEmpty())
        return text;
    m_hasMasked = true;
    QStringList &known = m_masked[kind];
    if (!known.contains(text))
        known.append(text);
    return kind + u'-' + QString::number(known.indexOf(text) + 1);
}

int Recorder::maskedNumber(const QString &kind, int number)
{
    return m_keepsIdentifiers ? number : masked(kind, QString::number(number)).section(u'-', -1).toInt();
}

QString Recorder::maskedDigits(const QString &text, qsizetype kept)
{
    if (m_keepsIdentifiers)
        return text;
    m_hasMasked = true;
    return text.left(kept).leftJustified(text.size() - 1, u'0') + u'1';
}

// What \a setting would have to be for what is seen; nothing where that is not seen.
std::optional<QVariant> Recorder::valueSeen(const Facility &facility, const Setting &setting)
{
    const SeenValues seen = [&](const char *name) {
        for (const Facility &each : services::facilities()) {
            for (const Field &field : each.fields) {
                if (field.fullName(each.name) == facility.name + u'.' + QLatin1String(name))
                    return field.in(m_tree.told(field.path));
            }
        }
        return QVariant();
    };
    std::optional<QVariant> value;
    if (setting.recording.fixed.isValid())
        value = setting.recording.fixed;
    else if (setting.recording.value)
        value = setting.recording.value(seen);
    else if (const QVariant field = seen(setting.recording.field); field.isValid())
        value = field;
    if (value && value->isValid() && setting.type.isWhole)
        value = std::round(value->toDouble());
    if (value)
        value = setting.type.accept(*value);
    if (setting.type.isPrivate && !*setting.recording.mask && setting.recording.keptDigits < 0)
        return std::nullopt;
    if (value && *setting.recording.mask)
        value = masked(QLatin1String(setting.recording.mask), value->toString());
    if (value && setting.recording.keptDigits >= 0)
        value = maskedDigits(value->toString(), setting.recording.keptDigits);
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
        if (!setting.orders.empty()) {
            order(QStringList{facility.name} + wordsFor(setting, *value));
        } else if (QVariantMap section = m_phone.value(facility.name).toMap();
                   !section.contains(setting.key)) {
            section.insert(setting.key, *value);
            m_phone.insert(facility.name, section);
        }
    }
}

void Recorder::recordDisplay()
{
    const QString display = QStringLiteral("display");
    const QString attach = QStringLiteral("attach");
    const QString detach = QStringLiteral("detach");
    DisplayTree::Displays displays = DisplayTree::fromAttributes(m_tree.told(DisplayTree::PpsPath));
    static const QString wireless = QStringLiteral("miracast");
    // A session brings its display with it.
    if (m_facilities.contains(wireless))
        std::erase_if(displays, [](const auto &entry) { return entry.second.name.startsWith(wireless); });
    for (auto &[id, now] : displays) {
        // That of a session has the name of the sink.
        if (now.name.startsWith(wireless))
            now.name = wireless + u' ' + masked(QStringLiteral("sink"), now.name.mid(8).trimmed());
    }
    if (m_isFirst) {
        QVariantList all;
        for (const auto &[id, now] : displays)
            all.append(displayOf(id, now));
        if (!all.isEmpty())
            m_phone.insert(display, QVariantMap{{QStringLiteral("displays"), all}});
        m_displays = displays;
        return;
    }
    for (const auto &[id, before] : m_displays) {
        if (!displays.contains(id))
            order({display, before.detachable ? QStringLiteral("remove") : detach, QString::number(id)});
    }
    for (const auto &[id, now] : displays) {
        const QString number = QString::number(id);
        const auto known = m_displays.find(id);
        const bool isKnown = known != m_displays.end();
        if (!isKnown) {
            order({display, QStringLiteral("add"), number, now.name, QString::number(now.size.width()),
                QString::number(now.size.height()), QString::number(now.physicalSize.width()),
                QString::number(now.physicalSize.height())});
        } else if (known->second.size != now.size) {
            order({display, QStringLiteral("resize"), number, QString::number(now.size.width()),
                QString::number(now.size.height())});
        }
        if (isKnown ? known->second.rotation != now.rotation : now.rotation != 0)
            order({display, QStringLiteral("rotate"), number, QString::number(now.rotation)});
        if (isKnown ? known->second.attached != now.attached : !now.attached)
            order({display, now.attached ? attach : detach, number});
    }
    m_displays = displays;
}

// The network that serves, each of its cells as a network of its own under a name of this recording.
void Recorder::recordNetwork()
{
    const QString facility = QStringLiteral("cellular-network");
    const QVariantMap told =
        m_tree.told(QStringLiteral("/pps/services/cellular/radioctrl/status_cell_public"));
    QStringList technologies = m_tree.told(QStringLiteral("/pps/services/cellular/radioctrl/status_public"))
                                   .value(QStringLiteral("network_technology"))
                                   .toStringList();
    if (technologies.size() > 1)
        technologies.removeAll(QStringLiteral("cdma_1x")); // which serves beside
    if (told.isEmpty() || technologies.isEmpty()) {
        if (!m_serving.isEmpty())
            order({facility, std::exchange(m_serving, {}), QStringLiteral("leave")});
        return;
    }
    QVariantMap network{{QStringLiteral("technology"), technologies.first()},
        {QStringLiteral("services"),
            wordsOf(servicesOfBits(told.value(QStringLiteral("network_service")).toInt()))}};
    const auto insert = [&](const QString &key, const QVariant &value) {
        if (value.isValid())
            network.insert(key, value);
    };
    insert(QStringLiteral("operator"), now(QStringLiteral("cellular-network.operator")));
    insert(QStringLiteral("mcc"), now(QStringLiteral("cellular-network.mcc")));
    insert(QStringLiteral("mnc"), now(QStringLiteral("cellular-network.mnc")));
    insert(QStringLiteral("roaming"), now(QStringLiteral("cellular-network.roaming")));
    insert(QStringLiteral("display-name"),
        m_tree.told(QStringLiteral("/pps/services/rum/csm/status_public"))
            .value(QStringLiteral("network_name")));
    const QVariantMap cell =
        m_tree.told(QStringLiteral("/pps/services/cellular/radioctrl/status_cell_private"))
            .value(QStringLiteral("serving_network"))
            .toMap();
    // A modem may tell where it was in a network of another technology, too.
    for (const auto &[key, attribute, having] : CellKeys) {
        const int number = cell.value(attribute).toInt();
        if (number != 0 && having.split(u' ').contains(technologies.first()))
            network.insert(key, maskedNumber(key, number));
    }
    // Without a card that is ready, every network offers emergency calls alone.
    const bool isRestricted = now(QStringLiteral("simcard.state")) != QLatin1String("ready");
    const auto likened = [isRestricted](QVariantMap map) {
        if (isRestricted)
            map.remove(QStringLiteral("services"));
        return map;
    };
    QString name;
    for (const auto &[known, itsName] : m_networks) {
        if (name.isEmpty() && likened(known) == likened(network))
            name = itsName;
    }
    if (name.isEmpty()) {
        name = QStringLiteral("network-%1").arg(m_networks.size() + 1);
        m_networks.append({network, name});
        if (m_isFirst)
            m_phone.insert(facility, QVariantMap{{QStringLiteral("serving"), QStringList{name}}});
    }
    const QVariant rssi = now(QStringLiteral("cellular-network.rssi"));
    const bool isOther = name != m_serving;
    if (rssi.isValid() && rssi.toInt() < 0 && (isOther || isNew(QStringLiteral("cellular-network.rssi"))))
        order({facility, name, QStringLiteral("rssi"), numberText(rssi)});
    if (isOther)
        order({facility, name, QStringLiteral("serve")});
    m_serving = name;
}

// Those that there are at the beginning. Connections follow from the rest of the phone, and from
// applications.
void Recorder::recordDataProfile()
{
    const QString facility = QStringLiteral("data-profile");
    const QVariantMap told = m_tree.told(Profiles);
    QVariantMap profiles = m_phone.value(facility).toMap().value(QStringLiteral("profiles")).toMap();
    for (auto attribute = told.cbegin(); attribute != told.cend(); ++attribute) {
        if (attribute->typeId() != QMetaType::QVariantMap)
            continue;
        const QVariantMap profile = attribute->toMap();
        const QString enabled = QStringLiteral("enabled");
        const QString before = facility + u'.' + attribute.key();
        m_now.insert(before, profile.value(enabled));
        if (m_isFirst) {
            QVariantMap section{{enabled, profile.value(enabled).toBool()},
                {QStringLiteral("always-on"), profile.value(QStringLiteral("always_on")).toBool()},
                {QStringLiteral("access-controlled"),
                    profile.value(QStringLiteral("access_controlled")).toBool()}};
            if (profile.contains(QStringLiteral("apn")))
                section.insert(QStringLiteral("apn"), profile.value(QStringLiteral("apn")));
            profiles.insert(attribute.key(), section);
        } else if (profiles.contains(attribute.key())) {
            orderOnOff(before, {facility, attribute.key(), enabled});
        }
    }
    if (m_isFirst && !profiles.isEmpty())
        m_phone.insert(facility, QVariantMap{{QStringLiteral("profiles"), profiles}});
}

} // namespace oz::services
