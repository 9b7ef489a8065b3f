#include "phone/PublicValues.hpp"

#include "publishing/Error.hpp"
#include "publishing/Tree.hpp"
#include "radio/CellularWords.hpp"

#include <QRegularExpression>

#include <algorithm>

namespace oz::services {

namespace {

using Read = PublicValue::Read;
using Words = QList<std::pair<QVariant, QString>>; // what stands in the tree, and the word for it

const QString Cnice = QStringLiteral("/pps/services/cds/cnice/");
const QString Display = QStringLiteral("/pps/services/display/displays");

// What is in the attributes under the keys, and at the indices, of \a place; "*" is the instance.
QVariant at(const QVariantMap &attributes, const QString &place, const QString &instance)
{
    QVariant value = attributes;
    for (const QString &key : place.split(u'/')) {
        const QString name = key == u"*" ? instance : key;
        value = value.typeId() == QMetaType::QVariantList ? value.toList().value(name.toInt())
                                                          : value.toMap().value(name);
    }
    return value;
}

Read plain(const char *place)
{
    return [place = QString::fromLatin1(place)](const QVariantMap &attributes, const QString &instance) {
        return at(attributes, place, instance);
    };
}

// A number which is not known where it is \a unknown, and is published so many times as large.
Read number(const char *place, int unknown, double times = 1)
{
    return [=, read = plain(place)](const QVariantMap &attributes, const QString &instance) {
        const QVariant value = read(attributes, instance);
        return value.isValid() && value != unknown ? QVariant(value.toDouble() / times) : QVariant();
    };
}

Read either(const char *place, const char *yes, const char *no)
{
    return [=, read = plain(place)](const QVariantMap &attributes, const QString &instance) {
        const QVariant value = read(attributes, instance);
        return value == QLatin1String(yes) ? QVariant(true)
            : value == QLatin1String(no)   ? QVariant(false)
                                           : QVariant();
    };
}

Read sizeOf(const char *place)
{
    return [read = plain(place)](const QVariantMap &attributes, const QString &instance) {
        const QVariant value = read(attributes, instance);
        if (!value.isValid())
            return QVariant();
        return QVariant(
            value.typeId() == QMetaType::QVariantList ? value.toList().size() : value.toMap().size());
    };
}

QVariant numberOfAttributes(const QVariantMap &attributes, const QString &)
{
    return attributes.size();
}

// How a data profile is connected.
QVariant connectionOf(const QVariantMap &attributes, const QString &profile)
{
    const QVariantMap told = attributes.value(profile).toMap();
    if (told.isEmpty())
        return {};
    return told.value(QStringLiteral("connected")).toBool() ? QStringLiteral("connected")
        : told.value(QStringLiteral("active")).toBool()     ? QStringLiteral("connecting")
                                                            : QStringLiteral("disconnected");
}

// A member of the request of the LED that came last.
Read ofNewestRequest(const char *member)
{
    return [member = QString::fromLatin1(member)](const QVariantMap &attributes, const QString &) {
        const QVariantList requests = attributes.value(QStringLiteral("requests")).toList();
        return requests.isEmpty() ? QVariant() : requests.last().toMap().value(member);
    };
}

const QStringList Colors{QStringLiteral("red"), QStringLiteral("green"), QStringLiteral("blue"),
    QStringLiteral("yellow"), QStringLiteral("cyan"), QStringLiteral("magenta"), QStringLiteral("white")};

// The colour of the LED's elements that are on.
QVariant litColor(const QVariantMap &attributes, const QString &)
{
    // In the order of the elements as bits: red, green, blue.
    static const QStringList words{
        QStringLiteral("dark"), Colors[0], Colors[1], Colors[3], Colors[2], Colors[5], Colors[4], Colors[6]};
    int bits = 0;
    for (int i = 0; i < 3; ++i) {
        const QVariant element = attributes.value(Colors[i]);
        if (!element.isValid())
            return {};
        bits |= element == QLatin1String("on") ? 1 << i : 0;
    }
    return words[bits];
}

struct Table
{
    std::vector<PublicValue> values;

    void add(
        const char *name, PublicValue::Type type, const QString &path, const Read &read, const char *help)
    {
        values.push_back({QString::fromLatin1(name), type, path, read, QString::fromLatin1(help), {}});
    }
    void add(const char *name, const QString &path, const Read &read, const Words &words, const char *help)
    {
        PublicValue value{QString::fromLatin1(name), PublicValue::Word, path,
            [read, words](const QVariantMap &attributes, const QString &instance) {
                const QVariant found = read(attributes, instance);
                const auto word = std::find_if(
                    words.begin(), words.end(), [&](const auto &pair) { return pair.first == found; });
                return word == words.end() ? QVariant() : QVariant(word->second);
            },
            QString::fromLatin1(help), {}};
        for (const auto &word : words)
            value.words.append(word.second);
        values.push_back(value);
    }
};

// Words that stand in the tree as they are called.
Words same(const QStringList &words)
{
    Words pairs;
    for (const QString &word : words)
        pairs.append({word, word});
    return pairs;
}

void addPowerAndStorage(Table *table)
{
    constexpr int missing = 80'000'000;
    const QString battery = QStringLiteral("/pps/system/BattMgr/status");
    const QString sdcard = QStringLiteral("/pps/system/filesystem/removable/sdcard");
    table->add("sdcard.mounted", PublicValue::Truth, sdcard, plain("mounted"), "whether a card is mounted");
    table->add("sdcard.busy", PublicValue::Truth, sdcard, plain("busy"), "whether it is read or written");
    table->add("battery.level", PublicValue::Number, battery,
        number("BatteryInfo/BatteryStatus/0/StateOfCharge", missing), "the charge in percent");
    table->add("battery.charging", battery, plain("SystemInfo/ChargingState"),
        {{QStringLiteral("NC"), QStringLiteral("no")}, {QStringLiteral("CC"), QStringLiteral("yes")},
            {QStringLiteral("DC"), QStringLiteral("full")}},
        "whether it takes charge");
    table->add("battery.chargers", PublicValue::Number, battery, plain("ChargerInfo/NumOfSource"),
        "how many chargers are connected");
    table->add("battery.present", PublicValue::Truth, battery,
        either("BatteryInfo/BatteryStatus/0/BatteryPresent", "YES", "NO"), "whether there is one");
    table->add("battery.temperature", PublicValue::Number, battery,
        number("BatteryInfo/BatteryStatus/0/Temperature", missing, 100), "in degrees Celsius");
    table->add("battery.condition", battery, plain("BatteryInfo/BatteryStatus/0/StateOfBattery"),
        {{QStringLiteral("OK"), QStringLiteral("ok")}, {QStringLiteral("BAD"), QStringLiteral("bad")}},
        "its condition");
    table->add("battery.receiver", PublicValue::Text, battery, plain("WlcSourceInfo/WlcSrcParameters/0/RxID"),
        "the receiver that a wireless charger sees; null where there is none");
}

void addDevice(Table *table)
{
    table->add("activity.state", QStringLiteral("/dev/power/mgr"), plain("user_activity"),
        same({QStringLiteral("active"), QStringLiteral("standby")}), "whether somebody uses the phone");
    table->add("orientation.orientation", QStringLiteral("/pps/services/sensors/orientation"),
        plain("orientation"),
        same({QStringLiteral("top-up"), QStringLiteral("bottom-up"), QStringLiteral("left-up"),
            QStringLiteral("right-up"), QStringLiteral("face-up"), QStringLiteral("face-down"),
            QStringLiteral("undefined")}),
        "how the phone is held");
    const QString names = QStringLiteral("/pps/services/deviceproperties");
    table->add(
        "hardware.name", PublicValue::Text, names, plain("devicename"), "what the user calls the phone");
    table->add("hardware.model", PublicValue::Text, names, plain("modelname"), "the model");
    table->add("display.*.attached", PublicValue::Truth, Display, plain("*/attached"),
        "whether the display with this identifier can be seen");
    table->add(
        "display.*.width", PublicValue::Number, Display, plain("*/width"), "in pixels, as it is built");
    table->add(
        "display.*.height", PublicValue::Number, Display, plain("*/height"), "in pixels, as it is built");
    table->add("display.*.rotation", PublicValue::Number, Display, plain("*/rotation"), "in degrees");
}

void addCellular(Table *table)
{
    table->add("simcard.state", QStringLiteral("/pps/services/cellular/uicc/card0/status_private"),
        plain("uicc_state/state"),
        {{QStringLiteral("READY"), QStringLiteral("ready")},
            {QStringLiteral("NOT_DETECTED"), QStringLiteral("removed")},
            {QStringLiteral("CHV_REQUESTED"), QStringLiteral("pin")},
            {QStringLiteral("NOT_PROVISIONED"), QStringLiteral("not-provisioned")},
            {QStringLiteral("INVALID_SIM"), QStringLiteral("incompatible")},
            {QStringLiteral("CARD_ERROR"), QStringLiteral("unreadable")}},
        "the SIM card; pin: it waits for it");
    const QString radio = CellularWords::Radioctrl + QLatin1String("status_public");
    table->add(
        "radio.power", PublicValue::Truth, radio, either("power_status", "ON", "OFF"), "whether it is on");
    table->add("radio.technologies", PublicValue::List, radio, plain("network_technology"),
        "of the networks that serve: gsm, umts, cdma_1x, evdo, lte");
    table->add("radio.enabled", PublicValue::List,
        CellularWords::Radioctrl + QLatin1String("status_persistent"),
        plain("configured_technologies/enabled"), "the technologies that the user allows");
    const QString connections = Cnice + QLatin1String("status");
    table->add("radio.data", PublicValue::Truth, connections, either("data_services_status", "ON", "OFF"),
        "whether mobile data is on");
    table->add("radio.data-roaming", PublicValue::Truth, connections, plain("user_enabled_data_roaming"),
        "whether the user allows it while roaming");
    const QString network = CellularWords::Radioctrl + QLatin1String("status_cell_public");
    table->add("cellular-network.rssi", PublicValue::Number, network, plain("signal_strength/RSSI"),
        "the signal of the network that serves, in dBm");
    table->add(
        "cellular-network.operator", PublicValue::Text, network, plain("network_name/name"), "its operator");
    table->add("cellular-network.mcc", PublicValue::Text, network, plain("serving_network/mcc"),
        "its mobile country code");
    table->add("cellular-network.mnc", PublicValue::Text, network, plain("serving_network/mnc"),
        "its mobile network code");
    table->add("cellular-network.roaming", PublicValue::Truth, network,
        either("roaming/state", "ROAMING", "HOME"), "whether it is a network of others");
    table->add("data-profile.*.enabled", PublicValue::Truth, connections, plain("*/enabled"),
        "whether the profile of this name is enabled");
    table->add("data-profile.*.connection", connections, connectionOf,
        same({QStringLiteral("disconnected"), QStringLiteral("connecting"), QStringLiteral("connected")}),
        "its connection");
}

void addOutputs(Table *table)
{
    const QString led = QStringLiteral("/pps/services/led/activity");
    table->add(
        "led.active", PublicValue::Truth, led,
        [](const QVariantMap &attributes, const QString &) -> QVariant {
            return !attributes.value(QStringLiteral("requests")).toList().isEmpty();
        },
        "whether a request is under way");
    table->add("led.lit", QStringLiteral("/pps/services/led/status"), litColor,
        same(QStringList{QStringLiteral("dark")} + Colors), "what it shows now");
    table->add("led.color", led, ofNewestRequest("color"), same(Colors), "of the newest request under way");
    table->add("led.shown", PublicValue::Number, led, ofNewestRequest("shown"), "the flashes of it so far");
    table->add(
        "led.flashes", PublicValue::Number, led, plain("flashes"), "all flashes since the service started");
    table->add("led.last-color", led, plain("last/color"), same(Colors), "of the request that ended last");
    table->add("led.last-shown", PublicValue::Number, led, plain("last/shown"), "how many flashes it had");
    table->add("led.last-end", led, plain("last/end"),
        {{QStringLiteral("done"), QStringLiteral("done")},
            {QStringLiteral("cancelled"), QStringLiteral("cancelled")},
            {QStringLiteral("replaced"), QStringLiteral("replaced")},
            {QStringLiteral("client gone"), QStringLiteral("client-gone")}},
        "how it ended");
    const QString vibration = QStringLiteral("/pps/services/vibration/activity");
    const Words ends = same({QStringLiteral("done"), QStringLiteral("stopped"), QStringLiteral("replaced")});
    table->add(
        "vibration.running", PublicValue::Truth, vibration, plain("running"), "whether the motor runs");
    table->add(
        "vibration.intensity", PublicValue::Number, vibration, plain("run/intensity"), "while it runs");
    table->add("vibration.runs", PublicValue::Number, vibration, plain("runs"), "since the service started");
    table->add("vibration.last-duration", PublicValue::Number, vibration, plain("last/duration"),
        "of the run before: the milliseconds that were asked for");
    table->add("vibration.last-ran", PublicValue::Number, vibration, plain("last/ran"),
        "the milliseconds that it ran");
    table->add("vibration.last-intensity", PublicValue::Number, vibration, plain("last/intensity"),
        "its intensity, up to 100");
    table->add("vibration.last-end", vibration, plain("last/end"), ends, "how it ended");
}

void addWireless(Table *table)
{
    const QString wifi = QStringLiteral("/pps/services/wifi_p2p/manager/status");
    table->add(
        "wifi-direct.scanning", PublicValue::Truth, wifi, plain("scanning"), "whether it looks for peers");
    table->add("wifi-direct.connection", wifi, plain("connection/status"),
        same({QStringLiteral("disconnected"), QStringLiteral("connecting"), QStringLiteral("connected")}),
        "the connection with a group");
    table->add("wifi-direct.role", wifi, plain("connection/role"),
        {{QStringLiteral("GO"), QStringLiteral("owner")},
            {QStringLiteral("client"), QStringLiteral("client")}},
        "what the phone is in the group");
    table->add("wifi-direct.visible", PublicValue::Number, wifi, sizeOf("discovered_devices/device_list"),
        "how many peers are in sight");
    table->add("wifi-direct.members", PublicValue::Number, wifi, sizeOf("connected_devices/device_list"),
        "how many peers are in the group");
    const QString miracast = QStringLiteral("/pps/services/miracast/status");
    table->add("miracast.running", PublicValue::Truth, miracast,
        either("service_status", "RUNNING", "STOPPED"), "whether the service runs");
    table->add("miracast.stop-reason", PublicValue::Number, miracast, plain("service_stop_reason"),
        "the code of why it does not; 0 while it does");
    table->add("miracast.connection", miracast, plain("sink_state"),
        {{QStringLiteral("DISCONNECTED"), QStringLiteral("disconnected")},
            {QStringLiteral("CONNECTING"), QStringLiteral("connecting")},
            {QStringLiteral("CONNECTED"), QStringLiteral("connected")}},
        "the connection with a sink");
    table->add("miracast.session", miracast, plain("session"),
        {{QStringLiteral("STOPPED"), QStringLiteral("stopped")},
            {QStringLiteral("PLAYING"), QStringLiteral("playing")},
            {QStringLiteral("PAUSED"), QStringLiteral("paused")}},
        "what the session does");
    table->add("miracast.sink", PublicValue::Text, miracast, plain("sink_device/name"), "the sink's name");
    table->add("miracast.sinks", PublicValue::Number, QStringLiteral("/pps/services/miracast/sinks"),
        numberOfAttributes, "how many sinks are in sight");
}

// A request that a message names, to the object at \a path; "fields" are members of its data.
PublicRequest message(const char *name, const char *path, const char *message,
    const QList<std::pair<PublicRequest::Field, QString>> &fields, const char *help)
{
    PublicRequest request{QString::fromLatin1(name), {}, {}, QString::fromLatin1(help)};
    for (const auto &field : fields)
        request.fields.append(field.first);
    request.read = [path = QString::fromLatin1(path), message = QString::fromLatin1(message), fields](
                       const QString &asked, const QVariantMap &attributes) -> QVariant {
        if (asked != path || attributes.value(QStringLiteral("msg")) != message)
            return {};
        const QVariantMap data = attributes.value(QStringLiteral("dat")).toMap();
        QVariantMap values;
        for (const auto &[field, member] : fields) {
            if (data.contains(member))
                values.insert(field.name, data.value(member));
        }
        return values;
    };
    return request;
}

// One to a data profile, whose name is in the path.
PublicRequest ofProfile(const char *name, const char *message, const char *help)
{
    const QString profile = QStringLiteral("profile");
    return {QString::fromLatin1(name), {{profile, PublicValue::Text}},
        [profile, message = QString::fromLatin1(message)](
            const QString &asked, const QVariantMap &attributes) -> QVariant {
            const QString suffix = QStringLiteral("_control");
            if (!asked.startsWith(Cnice) || !asked.endsWith(suffix)
                || attributes.value(QStringLiteral("msg")) != message)
                return {};
            return QVariantMap{{profile, asked.mid(Cnice.size()).chopped(suffix.size())}};
        },
        QString::fromLatin1(help)};
}

// One to the vibrator, which runs or stops.
PublicRequest ofVibrator(const char *name, bool runs, const char *help)
{
    const QString duration = QStringLiteral("duration");
    const QString intensity = QStringLiteral("intensity");
    PublicRequest request{QString::fromLatin1(name), {}, {}, QString::fromLatin1(help)};
    if (runs)
        request.fields = {{duration, PublicValue::Number}, {intensity, PublicValue::Number}};
    request.read = [=](const QString &asked, const QVariantMap &attributes) -> QVariant {
        const bool isRun =
            attributes.value(duration).toInt() != 0 && attributes.value(intensity).toInt() != 0;
        return asked == u"/pps/services/vibrator" && isRun == runs ? QVariant(attributes) : QVariant();
    };
    return request;
}

std::vector<PublicRequest> makeRequests()
{
    constexpr const char *led = "/pps/services/led/control";
    constexpr const char *wifi = "/pps/services/wifi_p2p/manager/control";
    constexpr const char *miracast = "/pps/services/miracast/control";
    const auto text = [](const char *name, const char *member) {
        return std::pair(
            PublicRequest::Field{QString::fromLatin1(name), PublicValue::Text}, QString::fromLatin1(member));
    };
    const PublicRequest::Field color{QStringLiteral("color"), PublicValue::Word, Colors};
    const PublicRequest::Field count{QStringLiteral("count"), PublicValue::Number};
    return {
        message("led.flash", led, "requestLED",
            {{color, QStringLiteral("color")}, {count, QStringLiteral("blinkCount")}},
            "to flash; count -1: until cancelled"),
        message("led.cancel", led, "cancelLED", {}, "to end a request"),
        ofVibrator("vibration.run", true, "to vibrate: milliseconds, and 1 to 100"),
        ofVibrator("vibration.stop", false, "to stop"),
        ofProfile("data-profile.connect", "connect", "to connect a profile"),
        ofProfile("data-profile.disconnect", "disconnect", "to give a connection up"),
        message("wifi-direct.scan", wifi, "wifi_p2p_scan_and_listen", {}, "to look for peers"),
        message("wifi-direct.connect", wifi, "wifi_p2p_connect", {text("address", "addr")},
            "to connect with a peer"),
        message("wifi-direct.cancel-connect", wifi, "wifi_p2p_cancel_connect", {}, "to leave that"),
        message("wifi-direct.start-session", wifi, "wifi_p2p_start_session", {}, "to begin a session"),
        message("wifi-direct.stop-session", wifi, "wifi_p2p_stop_session", {}, "to end it"),
        message("miracast.scan", miracast, "miracast_sink_discover", {}, "to look for sinks"),
        message("miracast.connect", miracast, "miracast_session_start", {text("address", "sink_mac")},
            "to show the screen on a sink"),
        message("miracast.disconnect", miracast, "miracast_session_stop", {}, "to end that"),
        message("miracast.pause", miracast, "miracast_session_pause", {}, "to pause it"),
        message("miracast.resume", miracast, "miracast_session_resume", {}, "to go on"),
        message("miracast.shutdown", miracast, "miracast_shutdown", {}, "to end the service"),
        message("miracast.warmup", miracast, "miracast_app_context", {text("name", "name")},
            "to name the application"),
    };
}

const QString Star = QStringLiteral("*");

// The instance that \a name names where it is one of \a value; nothing where it is none.
std::optional<QString> instanceIn(const QString &name, const PublicValue &value)
{
    if (!value.name.contains(Star))
        return name == value.name ? std::optional(QString()) : std::nullopt;
    const QString before = value.name.section(u'*', 0, 0);
    const QString after = value.name.section(u'*', 1);
    if (!name.startsWith(before) || !name.endsWith(after) || name.size() <= before.size() + after.size())
        return std::nullopt;
    return name.mid(before.size()).chopped(after.size());
}

// Those of \a known that belong to the facility of \a name, else the facilities.
QString knownFor(const QString &name, const QStringList &known)
{
    const QString facility = name.section(u'.', 0, 0) + u'.';
    QStringList near = known.filter(QRegularExpression(u'^' + QRegularExpression::escape(facility)));
    if (near.isEmpty()) {
        for (const QString &each : known)
            near.append(each.section(u'.', 0, 0));
        near.removeDuplicates();
        return QLatin1String("there are those of ") + near.join(QLatin1String(", "));
    }
    return QLatin1String("there is ") + near.join(QLatin1String(", "));
}

} // namespace

QString PublicValue::typeText() const
{
    switch (type) {
    case Number:
        return QStringLiteral("a number");
    case Truth:
        return QStringLiteral("true or false");
    case Word:
        return words.join(u'|');
    case Text:
        return QStringLiteral("text");
    case List:
        return QStringLiteral("a list");
    }
    return {};
}

QVariant PublicValueUse::now(const Tree &tree) const
{
    return value->read(tree.told(value->path), instance);
}

const std::vector<PublicValue> &publicValues()
{
    static const std::vector<PublicValue> all = [] {
        Table table;
        for (const auto add : {addPowerAndStorage, addDevice, addCellular, addOutputs, addWireless})
            add(&table);
        return std::move(table.values);
    }();
    return all;
}

PublicValueUse publicValueNamed(const QString &name)
{
    QStringList known;
    for (const PublicValue &value : publicValues()) {
        if (const auto instance = instanceIn(name, value))
            return {&value, *instance};
        known.append(value.name);
    }
    throw Error(QLatin1String("there is no value '") + name + QLatin1String("'; ") + knownFor(name, known));
}

const std::vector<PublicRequest> &publicRequests()
{
    static const std::vector<PublicRequest> all = makeRequests();
    return all;
}

const PublicRequest &publicRequestNamed(const QString &name)
{
    QStringList known;
    for (const PublicRequest &request : publicRequests()) {
        if (request.name == name)
            return request;
        known.append(request.name);
    }
    throw Error(QLatin1String("there is no request '") + name + QLatin1String("'; ") + knownFor(name, known));
}

QVariantMap describePublic(const Tree &tree)
{
    QVariantList values;
    for (const PublicValue &value : publicValues()) {
        QVariantMap described{{QStringLiteral("name"), value.name},
            {QStringLiteral("type"), value.typeText()}, {QStringLiteral("help"), value.help}};
        const QVariant now = value.name.contains(Star) ? QVariant() : PublicValueUse{&value, {}}.now(tree);
        if (now.isValid())
            described.insert(QStringLiteral("now"), now);
        values.append(described);
    }
    QVariantList requests;
    for (const PublicRequest &request : publicRequests()) {
        QStringList fields;
        for (const PublicRequest::Field &field : request.fields)
            fields.append(field.name);
        requests.append(QVariantMap{{QStringLiteral("name"), request.name},
            {QStringLiteral("fields"), fields}, {QStringLiteral("help"), request.help}});
    }
    return {{QStringLiteral("values"), values}, {QStringLiteral("requests"), requests}};
}

} // namespace oz::services
