#pragma once

#include <oz/device/BatteryCondition.hpp>
#include <oz/device/CellularService.hpp>
#include <oz/device/CellularTechnology.hpp>
#include <oz/device/DeviceOrientation.hpp>
#include <oz/device/DisplayTechnology.hpp>
#include <oz/device/HdmiConnector.hpp>
#include <oz/device/SimCardState.hpp>
#include <oz/device/UserActivityState.hpp>
#include <oz/device/WiFiDirectIntent.hpp>
#include <oz/device/WiFiDirectRole.hpp>
#include <oz/device/WiFiDirectWpsMethod.hpp>
#include <oz/testing/OzTestingGlobal.hpp>

#include <QByteArray>
#include <QList>
#include <QSize>
#include <QString>
#include <QStringList>
#include <QVariantMap>

#include <chrono>
#include <optional>
#include <type_traits>
#include <utility>

namespace oz::testing {

class PhoneSettings;

/*! A section of the phone's file. It is valid as long as its settings are, and its setters are chained. */
class OZ_TESTING_EXPORT SettingsSection
{
public:
    /*! The section at \a path; PhoneSettings makes them. */
    SettingsSection(PhoneSettings &settings, const QStringList &path)
        : m_settings(&settings), m_path(path) { }

protected:
    /*! Sets a key. */
    void put(const char *key, const QVariant &value);
    /*! Adds to a list. */
    void append(const char *key, const QVariant &value);
    /*! Null, which says that it is not known, where there is no value. */
    template <typename Value>
    [[nodiscard]] static QVariant orNull(const std::optional<Value> &value)
    {
        return value ? QVariant(*value) : QVariant::fromValue(nullptr);
    }

private:
    PhoneSettings *m_settings;
    QStringList m_path;
};

/*! A section whose setters return it as a \a Section. */
template <typename Section>
class SettingsOf : public SettingsSection
{
protected:
    using SettingsSection::SettingsSection;
    /*! Sets a key, for a setter to return. */
    template <typename Value>
    Section &set(const char *key, const Value &value)
    {
        if constexpr (std::is_convertible_v<Value, std::chrono::duration<double>>)
            put(key, value.count());
        else
            put(key, value);
        return static_cast<Section &>(*this);
    }
};

/*! The removable SD card. */
class OZ_TESTING_EXPORT SdCardSettings : public SettingsOf<SdCardSettings>
{
public:
    using SettingsOf::SettingsOf;
    /*! Whether a card is mounted. */
    SdCardSettings &mounted(bool is) { return set("mounted", is); }
    /*! Whether it is being read or written. */
    SdCardSettings &busy(bool is) { return set("busy", is); }
};

/*! The battery and its chargers. */
class OZ_TESTING_EXPORT BatterySettings : public SettingsOf<BatterySettings>
{
public:
    using SettingsOf::SettingsOf;
    /*! The charge, 0 to 100 percent. */
    BatterySettings &level(int percent) { return set("level", percent); }
    /*! Whether a charger is connected by wire. */
    BatterySettings &plugged(bool is) { return set("plugged", is); }
    /*! The receiver that a wireless charger sees; empty: the phone lies on none. */
    BatterySettings &wirelessReceiver(const QString &id) { return set("wireless-receiver", id); }
    /*! Whether there is a battery in the phone. */
    BatterySettings &present(bool is) { return set("present", is); }
    /*! Whether the charge stays as it is, whatever the chargers do. */
    BatterySettings &held(bool is) { return set("held", is); }
    /*! Its condition. */
    BatterySettings &condition(oz::device::BatteryCondition::Type condition);
    /*! 1 to 1,000,000 mAh. */
    BatterySettings &fullChargeCapacity(int milliampereHours)
    {
        return set("full-charge-capacity", milliampereHours);
    }
    /*! 0 to 1,000,000. */
    BatterySettings &cycleCount(int count) { return set("cycle-count", count); }
    /*! -100 to 200 degrees Celsius; nothing: it is not known. */
    BatterySettings &temperature(std::optional<double> celsius);
    /*! How fast it is charged: 0.001 to 86,400 seconds. */
    BatterySettings &chargingTimePerPercent(std::chrono::duration<double> time)
    {
        return set("charging-seconds-per-percent", time);
    }
    /*! How fast it is used up: 0.001 to 86,400 seconds. */
    BatterySettings &dischargingTimePerPercent(std::chrono::duration<double> time)
    {
        return set("discharging-seconds-per-percent", time);
    }
};

/*! Whether somebody uses the phone. */
class OZ_TESTING_EXPORT ActivitySettings : public SettingsOf<ActivitySettings>
{
public:
    using SettingsOf::SettingsOf;
    /*! Active or Inactive. */
    ActivitySettings &state(oz::device::UserActivityState::Type state);
    /*! From the last time that it became active until it is in standby by itself; 0: never. */
    ActivitySettings &idleTime(std::chrono::duration<double> time) { return set("idle-seconds", time); }
    /*! Further statuses of the power manager, by their names. */
    ActivitySettings &otherStatuses(const QVariantMap &statuses) { return set("other-statuses", statuses); }
};

/*! How the phone is held. */
class OZ_TESTING_EXPORT OrientationSettings : public SettingsOf<OrientationSettings>
{
public:
    using SettingsOf::SettingsOf;
    /*! Which side is up; nothing: its sensor cannot tell. */
    OrientationSettings &orientation(std::optional<oz::device::DeviceOrientation::Type> orientation);
};

/*! One of the displays. */
class OZ_TESTING_EXPORT DisplaySettings : public SettingsOf<DisplaySettings>
{
public:
    using SettingsOf::SettingsOf;
    /*! One that contains "miracast" is taken for wireless. */
    DisplaySettings &name(const QString &name) { return set("name", name); }
    /*! Whether it is part of the phone. */
    DisplaySettings &internal(bool is) { return set("kind", QLatin1String(is ? "internal" : "external")); }
    /*! Whether it can be seen. */
    DisplaySettings &attached(bool is) { return set("attached", is); }
    /*! Whether it can be taken away. */
    DisplaySettings &detachable(bool is) { return set("detachable", is); }
    /*! In pixels, in its native orientation. */
    DisplaySettings &size(const QSize &pixels);
    /*! In millimetres; 0 x 0: not known. */
    DisplaySettings &physicalSize(const QSize &millimetres);
    /*! 0, 90, 180 or 270 degrees. */
    DisplaySettings &rotation(int degrees) { return set("rotation", degrees); }
    /*! How it is built. */
    DisplaySettings &technology(oz::device::DisplayTechnology::Type technology);
};

/*! What the phone is. Of each text, nothing says that it is not known. */
class OZ_TESTING_EXPORT HardwareSettings : public SettingsOf<HardwareSettings>
{
public:
    using SettingsOf::SettingsOf;
    /*! The identifier of this one phone. */
    HardwareSettings &pin(const std::optional<QString> &pin) { return set("pin", orNull(pin)); }
    /*! The serial number. */
    HardwareSettings &serialNumber(const std::optional<QString> &number)
    {
        return set("serial-number", orNull(number));
    }
    /*! The identifier in GSM, UMTS and LTE networks. */
    HardwareSettings &imei(const std::optional<QString> &imei) { return set("imei", orNull(imei)); }
    /*! The identifier in CDMA networks. */
    HardwareSettings &meid(const std::optional<QString> &meid) { return set("meid", orNull(meid)); }
    /*! The identifier of the model's hardware. */
    HardwareSettings &hardwareId(const std::optional<QString> &id) { return set("hardware-id", orNull(id)); }
    /*! What the user calls it. */
    HardwareSettings &deviceName(const std::optional<QString> &name)
    {
        return set("device-name", orNull(name));
    }
    /*! What the maker calls it. */
    HardwareSettings &modelName(const std::optional<QString> &name)
    {
        return set("model-name", orNull(name));
    }
    /*! The maker's number of it. */
    HardwareSettings &modelNumber(const std::optional<QString> &number)
    {
        return set("model-number", orNull(number));
    }
    /*! Whether it has a keyboard of keys. */
    HardwareSettings &keyboard(bool has) { return set("keyboard", QLatin1String(has ? "qwerty" : "none")); }
    /*! Its connector; Unknown: it is not known. */
    HardwareSettings &hdmi(oz::device::HdmiConnector::Type connector);
    /*! Whether it can show its screen on wireless displays. */
    HardwareSettings &miracast(bool can) { return set("miracast", can); }
    /*! Adds a processor, the first one in the place of those that there are else. */
    HardwareSettings &addProcessor(const QString &model, int megahertz);
};

/*! The SIM card. Of each text, nothing says that the card does not hold it. */
class OZ_TESTING_EXPORT SimCardSettings : public SettingsOf<SimCardSettings>
{
public:
    using SettingsOf::SettingsOf;
    /*! What it is ready for. */
    SimCardSettings &state(oz::device::SimCardState::Type state);
    /*! The country code of the home network. */
    SimCardSettings &mcc(const std::optional<QString> &mcc) { return set("mcc", orNull(mcc)); }
    /*! The network code of the home network. */
    SimCardSettings &mnc(const std::optional<QString> &mnc) { return set("mnc", orNull(mnc)); }
    /*! The card's serial number. */
    SimCardSettings &iccid(const std::optional<QString> &iccid) { return set("iccid", orNull(iccid)); }
    /*! The subscriber. */
    SimCardSettings &imsi(const std::optional<QString> &imsi) { return set("imsi", orNull(imsi)); }
};

/*! The radio. */
class OZ_TESTING_EXPORT RadioSettings : public SettingsOf<RadioSettings>
{
public:
    using SettingsOf::SettingsOf;
    /*! Whether it is on. */
    RadioSettings &power(bool isOn) { return set("power", isOn); }
    /*! Of the hardware. */
    RadioSettings &technologies(oz::device::CellularTechnology::Types technologies);
    /*! That the user allows, of those of the hardware. */
    RadioSettings &enabledTechnologies(oz::device::CellularTechnology::Types technologies);
    /*! Of the hardware. */
    RadioSettings &services(oz::device::CellularService::Types services);
    /*! Of the hardware: "cdma", "gsm", "umts" and "lte", each with the list of its bands. */
    RadioSettings &bands(const QVariantMap &bands) { return set("bands", bands); }
    /*! Whether the user has switched mobile data on. */
    RadioSettings &data(bool isOn) { return set("data", isOn); }
    /*! Whether the user allows it while roaming. */
    RadioSettings &dataRoaming(bool isAllowed) { return set("data-roaming", isAllowed); }
};

/*! One of the cellular networks around the phone. */
class OZ_TESTING_EXPORT NetworkSettings : public SettingsOf<NetworkSettings>
{
public:
    using SettingsOf::SettingsOf;
    /*! Its technology, which is one. */
    NetworkSettings &technology(oz::device::CellularTechnology::Type technology);
    /*! Who runs it. */
    NetworkSettings &operatorName(const QString &name) { return set("operator", name); }
    /*! What the user sees of that. */
    NetworkSettings &displayName(const QString &name) { return set("display-name", name); }
    /*! Its country code. */
    NetworkSettings &mcc(const QString &mcc) { return set("mcc", mcc); }
    /*! Its network code. */
    NetworkSettings &mnc(const QString &mnc) { return set("mnc", mnc); }
    /*! The signal strength, -150 to -1 dBm. */
    NetworkSettings &rssi(int dbm) { return set("rssi", dbm); }
    /*! What it offers. */
    NetworkSettings &services(oz::device::CellularService::Types services);
    /*! Whether it is a network of others. */
    NetworkSettings &roaming(bool is) { return set("roaming", is); }
    /*! Whether the user is not to know of the roaming. */
    NetworkSettings &suppress(bool is) { return set("suppress", is); }
    /*! Of GSM, UMTS and LTE. */
    NetworkSettings &cellId(int id) { return set("cell-id", id); }
    /*! Of GSM and UMTS. */
    NetworkSettings &lac(int lac) { return set("lac", lac); }
    /*! Of LTE. */
    NetworkSettings &tac(int tac) { return set("tac", tac); }
    /*! Of CDMA and EVDO. */
    NetworkSettings &bid(int bid) { return set("bid", bid); }
    /*! Of CDMA and EVDO. */
    NetworkSettings &nid(int nid) { return set("nid", nid); }
    /*! Of CDMA and EVDO. */
    NetworkSettings &sid(int sid) { return set("sid", sid); }
};

/*! One of the cellular data profiles. */
class OZ_TESTING_EXPORT ProfileSettings : public SettingsOf<ProfileSettings>
{
public:
    using SettingsOf::SettingsOf;
    /*! Whether it can be used. */
    ProfileSettings &enabled(bool is) { return set("enabled", is); }
    /*! Whether it is connected without being asked for, while there is mobile data. */
    ProfileSettings &alwaysOn(bool is) { return set("always-on", is); }
    /*! Whether only certain applications may use it. */
    ProfileSettings &accessControlled(bool is) { return set("access-controlled", is); }
    /*! Whether the applications here are among those. */
    ProfileSettings &permitted(bool is) { return set("permitted", is); }
    /*! The access point. */
    ProfileSettings &apn(const QString &apn) { return set("apn", apn); }
    /*! The network interface of its connection. */
    ProfileSettings &interface(const QString &name) { return set("interface", name); }
    /*! The file mode of the object for requests, such as 0666. */
    ProfileSettings &controlMode(int mode);
};

/*! The notification LED. */
class OZ_TESTING_EXPORT LedSettings : public SettingsOf<LedSettings>
{
public:
    using SettingsOf::SettingsOf;
    /*! How long a flash is: 0.001 to 60 seconds. */
    LedSettings &onTime(std::chrono::duration<double> time) { return set("on-seconds", time); }
    /*! How long it is off between two: 0.001 to 60 seconds. */
    LedSettings &offTime(std::chrono::duration<double> time) { return set("off-seconds", time); }
};

/*! The vibration motor. */
class OZ_TESTING_EXPORT VibrationSettings : public SettingsOf<VibrationSettings>
{
public:
    using SettingsOf::SettingsOf;
    /*! Whether there is one. */
    VibrationSettings &present(bool is) { return set("present", is); }
};

/*! Wi-Fi Direct; PhoneSettings::peer() has the peers. */
class OZ_TESTING_EXPORT WiFiDirectSettings : public SettingsOf<WiFiDirectSettings>
{
public:
    using SettingsOf::SettingsOf;
    /*! Whether the phone has it. */
    WiFiDirectSettings &supported(bool is) { return set("supported", is); }
    /*! Whether it is switched on. */
    WiFiDirectSettings &enabled(bool is) { return set("enabled", is); }
    /*! Of the phone's own hardware. */
    WiFiDirectSettings &address(const QString &address) { return set("address", address); }
    /*! The network interface of a group. */
    WiFiDirectSettings &interface(const QString &name) { return set("interface", name); }
    /*! Of groups that the phone owns. */
    WiFiDirectSettings &ssid(const QString &ssid) { return set("ssid", ssid); }
    /*! Of groups that the phone owns: 8 to 63 characters of ASCII. */
    WiFiDirectSettings &password(const QString &password) { return set("password", password); }
    /*! How long a scan takes: 0 to 3,600 seconds. */
    WiFiDirectSettings &scanTime(std::chrono::duration<double> time) { return set("scan-seconds", time); }
    /*! From a request to the connection, or to its failure: 0 to 3,600 seconds. */
    WiFiDirectSettings &connectTime(std::chrono::duration<double> time)
    {
        return set("connect-seconds", time);
    }
};

/*! One of the Wi-Fi Direct peers around the phone. */
class OZ_TESTING_EXPORT PeerSettings : public SettingsOf<PeerSettings>
{
public:
    using SettingsOf::SettingsOf;
    /*! Any text. */
    PeerSettings &name(const QString &name) { return set("name", name); }
    /*! Its hardware's. */
    PeerSettings &address(const QString &address) { return set("address", address); }
    /*! Of Wi-Fi Protected Setup: category, organisation and sub-category, such as "7-0050F204-1". */
    PeerSettings &type(const QString &type) { return set("type", type); }
    /*! Of one that supports wireless display. */
    PeerSettings &displayInfo(const QString &info) { return set("display-info", info); }
    /*! Whether scans find it. */
    PeerSettings &inRange(bool is) { return set("in-range", is); }
    /*! How a connection to it can be secured. */
    PeerSettings &wps(const QList<oz::device::WiFiDirectWpsMethod::Type> &methods);
    /*! Which the methods with a PIN want. */
    PeerSettings &pin(const QString &pin) { return set("pin", pin); }
    /*! What it will be in a group. */
    PeerSettings &intent(oz::device::WiFiDirectIntent::Type intent);
    /*! What it is in a group of others: NoRole, GroupOwner, or Client, with whom none connects. */
    PeerSettings &group(oz::device::WiFiDirectRole::Type role);
    /*! Of a group that it owns. */
    PeerSettings &ssid(const QString &ssid) { return set("ssid", ssid); }
    /*! Of a group that it owns. */
    PeerSettings &password(const QString &password) { return set("password", password); }
};

/*! Miracast; PhoneSettings::sink() has the sinks. */
class OZ_TESTING_EXPORT MiracastSettings : public SettingsOf<MiracastSettings>
{
public:
    using SettingsOf::SettingsOf;
    /*! How long a scan takes: 0 to 3,600 seconds. */
    MiracastSettings &scanTime(std::chrono::duration<double> time) { return set("scan-seconds", time); }
    /*! From a request to the session, or to its failure: 0 to 3,600 seconds. */
    MiracastSettings &connectTime(std::chrono::duration<double> time) { return set("connect-seconds", time); }
};

/*! One of the wireless displays around the phone. */
class OZ_TESTING_EXPORT SinkSettings : public SettingsOf<SinkSettings>
{
public:
    using SettingsOf::SettingsOf;
    /*! Any text. */
    SinkSettings &name(const QString &name) { return set("name", name); }
    /*! Its hardware's. */
    SinkSettings &address(const QString &address) { return set("address", address); }
    /*! Of Wi-Fi Protected Setup: category, organisation and sub-category, such as "7-0050F204-1". */
    SinkSettings &type(const QString &type) { return set("type", type); }
    /*! Whether scans find it. */
    SinkSettings &inRange(bool is) { return set("in-range", is); }
    /*! Whether it takes connections. */
    SinkSettings &accepts(bool does) { return set("accepts", does); }
    /*! The PIN that it wants; nothing: none. */
    SinkSettings &pin(const std::optional<QString> &pin) { return set("pin", orNull(pin)); }
    /*! Of a session, in pixels. */
    SinkSettings &size(const QSize &pixels);
};

/*!
 * What a test's phone is like when it starts. What is not set is as in the phone that is installed
 * (share/ozdevice/phone.json), except that networks, profiles, peers, sinks, displays and processors that are
 * named here take the place of all that are named there. Values are checked when the phone starts.
 */
class OZ_TESTING_EXPORT PhoneSettings
{
public:
    /*! The installed phone. */
    PhoneSettings() = default;
    /*! The phone that the text of a phone's file, or of a scenario, describes; nothing else can be set then.
     */
    [[nodiscard]] static PhoneSettings fromText(const QByteArray &text);
    /*! As fromText(), of a file. */
    [[nodiscard]] static PhoneSettings fromFile(const QString &file);

    [[nodiscard]] SdCardSettings sdcard() { return at("sdcard"); } //!< the SD card
    [[nodiscard]] BatterySettings battery() { return at("battery"); } //!< the battery
    [[nodiscard]] ActivitySettings activity() { return at("activity"); } //!< the user
    [[nodiscard]] OrientationSettings orientation() { return at("orientation"); } //!< the sensor
    /*! The display with the identifier \a id, 0 to 9999. */
    [[nodiscard]] DisplaySettings display(int id);
    [[nodiscard]] HardwareSettings hardware() { return at("hardware"); } //!< what the phone is
    [[nodiscard]] SimCardSettings simcard() { return at("simcard"); } //!< the SIM card
    [[nodiscard]] RadioSettings radio() { return at("radio"); } //!< the radio
    /*! The network that the phone's file calls \a name. */
    [[nodiscard]] NetworkSettings network(const QString &name)
    {
        return at("cellular-network", "networks", name);
    }
    /*! The networks that serve at the start, by their names. */
    void setServing(const QStringList &networks);
    /*! The data profile called \a name. */
    [[nodiscard]] ProfileSettings dataProfile(const QString &name)
    {
        return at("data-profile", "profiles", name);
    }
    /*! From a request for a data profile to its connection. */
    void setConnectTime(std::chrono::duration<double> time);
    [[nodiscard]] LedSettings led() { return at("led"); } //!< the notification LED
    [[nodiscard]] VibrationSettings vibration() { return at("vibration"); } //!< the vibration motor
    [[nodiscard]] WiFiDirectSettings wifiDirect() { return at("wifi-direct"); } //!< Wi-Fi Direct
    /*! The peer that the phone's file calls \a name. */
    [[nodiscard]] PeerSettings peer(const QString &name) { return at("wifi-direct", "peers", name); }
    [[nodiscard]] MiracastSettings miracast() { return at("miracast"); } //!< Miracast
    /*! The sink that the phone's file calls \a name. */
    [[nodiscard]] SinkSettings sink(const QString &name) { return at("miracast", "sinks", name); }

    /*! The text of the phone's file; empty for the installed phone. */
    [[nodiscard]] QByteArray text() const;

private:
    friend class SettingsSection;
    struct Place
    {
        PhoneSettings *settings;
        QStringList path;
        template <typename Section>
        operator Section() const // NOLINT(google-explicit-constructor)
        {
            return Section(*settings, path);
        }
    };
    [[nodiscard]] Place at(const char *section) { return {this, {QLatin1String(section)}}; }
    [[nodiscard]] Place at(const char *section, const char *list, const QString &name)
    {
        return {this, {QLatin1String(section), QLatin1String(list), name}};
    }
    [[nodiscard]] QVariant value(const QStringList &path) const;
    void setValue(const QStringList &path, const QVariant &value);

    // In the order in which they were set first, as peers and sinks have an order.
    QList<std::pair<QStringList, QVariant>> m_content;
    QByteArray m_text;
};

} // namespace oz::testing
