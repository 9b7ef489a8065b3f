// Made from the facilities' tables by `./oz pages`.
// clang-format off
#pragma once

#include <oz/testing/PhonePart.hpp>

namespace oz::testing {

/*! The verbs of `ozdevice sim activity`. */
class PhoneActivity : public ServicePart
{
public:
    using ServicePart::ServicePart;
    /*! Somebody uses the phone. */
    void active() { tell("active"); }
    /*! Nobody uses the phone any more. */
    void standby() { tell("standby"); }
    /*! Sets a status of the power manager, known or new. */
    void status(const QString &name, const QString &value) { tell("status", {word(name), word(value)}); }
};

/*! The verbs of `ozdevice sim battery`. */
class PhoneBattery : public ServicePart
{
public:
    using ServicePart::ServicePart;
    /*! Connects a charger. */
    void plug() { tell("plug"); }
    /*! Disconnects the charger. */
    void unplug() { tell("unplug"); }
    /*! Lays the phone on a wireless charger, or takes it off. */
    void setWirelessReceiver(const QString &rxid = {}) { tell("wireless", {optionalWord(rxid)}); }
    /*! Sets the charge (0 to 100 %). */
    void setLevel(int percent) { tell("level", {word(percent)}); }
    /*! Sets the condition (ok, bad, unknown). */
    void setCondition(const QString &value) { tell("condition", {word(value)}); }
    /*! Puts the battery in. */
    void insert() { tell("insert"); }
    /*! Takes the battery out. */
    void remove() { tell("remove"); }
    /*! Keeps the charge as it is, or lets it move by itself. */
    void setHeld(bool on) { tell("hold", {word(on)}); }
    /*! Sets the temperature; the battery charges from 0 to 45 only (-100 to 200 °C; unknown without a value). */
    void setTemperature(std::optional<double> value) { tell("temperature", {word(value)}); }
};

/*! The verbs of `ozdevice sim cellular-network NAME`. */
class PhoneCellularNetwork : public ServicePart
{
public:
    using ServicePart::ServicePart;
    /*! Lets it serve, in the place of one of its kind. */
    void serve() { tell("serve"); }
    /*! Leaves it. */
    void leave() { tell("leave"); }
    /*! Sets the operator's name, and the name that the user sees. */
    void setOperator(const QString &name) { tell("operator", {word(name)}); }
    /*! Sets its signal strength (-150 to -1 dBm). */
    void setRssi(int dbm) { tell("rssi", {word(dbm)}); }
    /*! Makes using it roaming, or not. */
    void setRoaming(bool on) { tell("roaming", {word(on)}); }
    /*! Hides the roaming from the user, or shows it. */
    void setSuppress(bool on) { tell("suppress", {word(on)}); }
};

/*! The verbs of `ozdevice sim clock`. */
class PhoneClock : public PhonePart
{
public:
    using PhonePart::PhonePart;
    /*! Lets the phone's time pass at once. */
    void advance(std::chrono::milliseconds time) { tell("advance", {word(time)}); }
    /*! Lets the phone's time go faster than the real one; 0 stands still. */
    void speed(double factor) { tell("speed", {word(factor)}); }
};

/*! The verbs of `ozdevice sim data-profile NAME`. */
class PhoneDataProfile : public DataProfilePart
{
public:
    using DataProfilePart::DataProfilePart;
    /*! Enables the profile. */
    void setEnabled(bool on) { tell("enabled", {word(on)}); }
    /*! Permits the applications here, where it is access-controlled. */
    void setPermitted(bool on) { tell("permitted", {word(on)}); }
    /*! Ends its connection from the network's side. */
    void drop() { tell("drop"); }
};

/*! The verbs of `ozdevice sim display`. */
class PhoneDisplay : public ServicePart
{
public:
    using ServicePart::ServicePart;
    /*! Adds an external display, attached; one called 'miracast...' is wireless. */
    void add(int id, const QString &name, int width, int height, int mmWidth = 0, int mmHeight = 0) { tell("add", {word(id), word(name), word(width), word(height), word(mmWidth), word(mmHeight)}); }
    /*! Takes a display away. */
    void remove(int id) { tell("remove", {word(id)}); }
    /*! Attaches a display. */
    void attach(int id) { tell("attach", {word(id)}); }
    /*! Detaches a display. */
    void detach(int id) { tell("detach", {word(id)}); }
    /*! Turns what a display shows: 0, 90, 180 or 270. */
    void rotate(int id, int degrees) { tell("rotate", {word(id), word(degrees)}); }
    /*! Gives a display another size in pixels. */
    void resize(int id, int width, int height) { tell("resize", {word(id), word(width), word(height)}); }
};

/*! The verbs of `ozdevice sim hardware`. */
class PhoneHardware : public ServicePart
{
public:
    using ServicePart::ServicePart;
    /*! Gives the device a name. */
    void setDeviceName(const QString &text) { tell("name", {word(text)}); }
};

/*! The verbs of `ozdevice sim led`. */
class PhoneLed : public LedPart
{
public:
    using LedPart::LedPart;
};

/*! The verbs of `ozdevice sim miracast`. */
class PhoneMiracast : public AnsweringPart
{
public:
    using AnsweringPart::AnsweringPart;
    /*! Brings a sink into range; scans bring it into sight. */
    void sinkAppears(const QString &sink) { tell("sink-appears", {word(sink)}); }
    /*! Takes a sink out of range, which ends its session; a scan finds it missing. */
    void sinkGoes(const QString &sink) { tell("sink-goes", {word(sink)}); }
    /*! Stops the service: 1 internally, 2 by an application, 4 for lack of support, 5 by policy, 6 to 9 as Wi-Fi Direct fails. */
    void stop(int code) { tell("stop", {word(code)}); }
    /*! Starts the service again. */
    void start() { tell("start"); }
    /*! Has these sinks in range and sight, and no others. */
    void sight(const QStringList &names = {}) { tell("sight", {optionalWord(names)}); }
    /*! Is connecting a sink, and stays so. */
    void connecting(const QString &sink) { tell("connecting", {word(sink)}); }
    /*! Shows the screen on a sink, or ends that (playing, paused, none). */
    void session(const QString &value, const QString &sink = {}) { tell("session", {word(value), optionalWord(sink)}); }
    /*! Answers the next request of this kind with an error (scan, connect, disconnect, pause, resume, shutdown, warmup). */
    void failNext(const QString &value, int code) { tell("fail-next", {word(value), word(code)}); }
};

/*! The verbs of `ozdevice sim orientation`. */
class PhoneOrientation : public ServicePart
{
public:
    using ServicePart::ServicePart;
    /*! Holds the phone top-up. */
    void topUp() { tell("top-up"); }
    /*! Holds the phone bottom-up. */
    void bottomUp() { tell("bottom-up"); }
    /*! Holds the phone left-up. */
    void leftUp() { tell("left-up"); }
    /*! Holds the phone right-up. */
    void rightUp() { tell("right-up"); }
    /*! Holds the phone face-up. */
    void faceUp() { tell("face-up"); }
    /*! Holds the phone face-down. */
    void faceDown() { tell("face-down"); }
    /*! Holds the phone so that its sensor cannot tell how. */
    void undefined() { tell("undefined"); }
};

/*! The verbs of `ozdevice sim radio`. */
class PhoneRadio : public ServicePart
{
public:
    using ServicePart::ServicePart;
    /*! Switches the radio. */
    void setPower(bool on) { tell("power", {word(on)}); }
    /*! Lets networks of these technologies serve, and no others (some of gsm, umts, cdma_1x, evdo, lte). */
    void setEnabledTechnologies(const QStringList &names) { tell("enable", {word(names)}); }
    /*! Switches mobile data. */
    void setData(bool on) { tell("data", {word(on)}); }
    /*! Allows mobile data while roaming. */
    void setDataRoaming(bool on) { tell("data-roaming", {word(on)}); }
};

/*! The verbs of `ozdevice sim sdcard`. */
class PhoneSdcard : public ServicePart
{
public:
    using ServicePart::ServicePart;
    /*! Inserts a card. */
    void insert() { tell("insert"); }
    /*! \deprecated The former name of insert(). */
    void mount() { insert(); }
    /*! Takes the card out, busy or not. */
    void remove() { tell("remove"); }
    /*! \deprecated The former name of remove(). */
    void unmount() { remove(); }
    /*! Begins to read or write the card. */
    void busy() { tell("busy"); }
    /*! Ends reading and writing. */
    void idle() { tell("idle"); }
};

/*! The verbs of `ozdevice sim simcard`. */
class PhoneSimcard : public ServicePart
{
public:
    using ServicePart::ServicePart;
    /*! Inserts the card, ready. */
    void insert() { tell("insert"); }
    /*! Takes the card out. */
    void remove() { tell("remove"); }
    /*! Makes it ready. */
    void ready() { tell("ready"); }
    /*! Makes it wait for its PIN. */
    void pin() { tell("pin"); }
    /*! Makes it one that is not provisioned. */
    void notProvisioned() { tell("not-provisioned"); }
    /*! Makes it one that cannot be used here. */
    void incompatible() { tell("incompatible"); }
    /*! Makes it one that cannot be read. */
    void unreadable() { tell("unreadable"); }
};

/*! The verbs of `ozdevice sim vibration`. */
class PhoneVibration : public VibrationPart
{
public:
    using VibrationPart::VibrationPart;
    /*! Puts the motor in, or takes it out. */
    void setPresent(bool on) { tell("present", {word(on)}); }
};

/*! The verbs of `ozdevice sim wifi-direct`. */
class PhoneWifiDirect : public FaultyPart
{
public:
    using FaultyPart::FaultyPart;
    /*! Switches Wi-Fi Direct on or off. */
    void setEnabled(bool on) { tell("enabled", {word(on)}); }
    /*! Gives the phone Wi-Fi Direct, or takes it away. */
    void setSupported(bool on) { tell("supported", {word(on)}); }
    /*! Brings a peer into range; scans bring it into sight. */
    void peerAppears(const QString &peer) { tell("peer-appears", {word(peer)}); }
    /*! Takes a peer out of range and sight. */
    void peerGoes(const QString &peer) { tell("peer-goes", {word(peer)}); }
    /*! Lets a peer join the group that the phone owns. */
    void peerJoins(const QString &peer) { tell("peer-joins", {word(peer)}); }
    /*! Lets a peer leave the phone's group. */
    void peerLeaves(const QString &peer) { tell("peer-leaves", {word(peer)}); }
    /*! Has these peers in range and sight, and no others. */
    void sight(const QStringList &names = {}) { tell("sight", {optionalWord(names)}); }
    /*! Looks for peers, or ends that. */
    void setScanning(bool on) { tell("scanning", {word(on)}); }
    /*! Is connecting a peer, or ends that. */
    void setConnecting(bool on) { tell("connecting", {word(on)}); }
    /*! Puts the phone into a group with these peers, whose owner comes first (owner, client, none). */
    void group(const QString &value, const QStringList &names = {}) { tell("group", {word(value), optionalWord(names)}); }
    /*! Answers the next request of this kind with an error (scan, connect, cancel-connect, start-session, stop-session, get-ip-address). */
    void failNext(const QString &value, int error) { tell("fail-next", {word(value), word(error)}); }
};

/*! The parts of a test's phone. */
class PhoneParts
{
public:
    /*! The part `activity`. */
    [[nodiscard]] PhoneActivity activity() { return {*m_link, QStringLiteral("activity")}; }
    /*! The part `battery`. */
    [[nodiscard]] PhoneBattery battery() { return {*m_link, QStringLiteral("battery")}; }
    /*! The part `cellular-network` that the phone's file calls \a name. */
    [[nodiscard]] PhoneCellularNetwork cellularNetwork(const QString &name) { return {*m_link, QStringLiteral("cellular-network"), name}; }
    /*! The part `clock`. */
    [[nodiscard]] PhoneClock clock() { return {*m_link, QStringLiteral("clock")}; }
    /*! The part `data-profile` that the phone's file calls \a name. */
    [[nodiscard]] PhoneDataProfile dataProfile(const QString &name) { return {*m_link, QStringLiteral("data-profile"), name}; }
    /*! The part `display`. */
    [[nodiscard]] PhoneDisplay display() { return {*m_link, QStringLiteral("display")}; }
    /*! The part `hardware`. */
    [[nodiscard]] PhoneHardware hardware() { return {*m_link, QStringLiteral("hardware")}; }
    /*! The part `led`. */
    [[nodiscard]] PhoneLed led() { return {*m_link, QStringLiteral("led")}; }
    /*! The part `miracast`. */
    [[nodiscard]] PhoneMiracast miracast() { return {*m_link, QStringLiteral("miracast")}; }
    /*! The part `orientation`. */
    [[nodiscard]] PhoneOrientation orientation() { return {*m_link, QStringLiteral("orientation")}; }
    /*! The part `radio`. */
    [[nodiscard]] PhoneRadio radio() { return {*m_link, QStringLiteral("radio")}; }
    /*! The part `sdcard`. */
    [[nodiscard]] PhoneSdcard sdcard() { return {*m_link, QStringLiteral("sdcard")}; }
    /*! The part `simcard`. */
    [[nodiscard]] PhoneSimcard simcard() { return {*m_link, QStringLiteral("simcard")}; }
    /*! The part `vibration`. */
    [[nodiscard]] PhoneVibration vibration() { return {*m_link, QStringLiteral("vibration")}; }
    /*! The part `wifi-direct`. */
    [[nodiscard]] PhoneWifiDirect wifiDirect() { return {*m_link, QStringLiteral("wifi-direct")}; }

protected:
    PhoneParts() = default;
    /*! Sets what leads to the phone. */
    void setLink(PhoneLink &link) { m_link = &link; }

private:
    PhoneLink *m_link = nullptr;
};

} // namespace oz::testing
