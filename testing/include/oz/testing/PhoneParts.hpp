#pragma once

#include <oz/device/BatteryCondition.hpp>
#include <oz/device/CellularConnectionState.hpp>
#include <oz/device/CellularTechnology.hpp>
#include <oz/device/DeviceOrientation.hpp>
#include <oz/device/LedColor.hpp>
#include <oz/device/MiracastDisplayState.hpp>
#include <oz/device/MiracastStopReason.hpp>
#include <oz/device/SimCardState.hpp>
#include <oz/device/WiFiDirectRole.hpp>
#include <oz/testing/OzTestingGlobal.hpp>

#include <QSize>
#include <QString>
#include <QStringList>
#include <QVariant>

#include <chrono>

namespace oz::testing {

class PhoneLink;

/*!
 * A part of a test's phone, which feeds a facility. It is a handle: valid as long as its phone is, cheap to
 * copy, and usable from any thread. When a call returns, what it did is published. A call that fails throws
 * PhoneError.
 */
class OZ_TESTING_EXPORT PhonePart
{
public:
    /*! The part \a name, of the instance \a instance where it has several; Phone makes them. */
    PhonePart(PhoneLink &link, const QString &name, const QString &instance = {});

    /*! Ends the facility's service, as if it had crashed. */
    void killService() { tell("kill-service"); }
    /*! Starts it again. */
    void startService() { tell("start-service"); }

protected:
    /*! Tells it what `ozdevice sim` would. */
    void tell(const char *verb, const QStringList &arguments = {});
    /*! As tell(), with the argument "on" or "off". */
    void turn(const char *verb, bool on);
    /*! One argument of names; none for no names. */
    [[nodiscard]] static QStringList list(const QStringList &names);
    /*! The value of scenarios' conditions called \a name, of this part and instance. */
    [[nodiscard]] QVariant value(const char *name) const;

private:
    PhoneLink *m_link;
    QString m_name;
    QString m_instance;
};

/*! A part whose service answers requests, some of which can be let go wrong. Each fault happens once, to the
 * next request. */
class OZ_TESTING_EXPORT AnsweringPart : public PhonePart
{
public:
    using PhonePart::PhonePart;
    /*! Answers the next request after a time of 1 ms to an hour. */
    void answerLate(std::chrono::milliseconds delay);
    /*! Leaves the next request unanswered. */
    void neverAnswer() { tell("never-answer"); }
};

/*! A part whose service can be given every fault. */
class OZ_TESTING_EXPORT FaultyPart : public AnsweringPart
{
public:
    using AnsweringPart::AnsweringPart;
    /*! Answers the next request with an errno, 1 to 4095. */
    void failWith(int error) { tell("fail-with", {QString::number(error)}); }
    /*! Ends the connection at the next request, as a service that dies. */
    void dieOnRequest() { tell("die-on-request"); }
    /*! Answers the next request with what means nothing. */
    void answerRubbish() { tell("answer-rubbish"); }
};

/*! Whether somebody uses the phone. */
class OZ_TESTING_EXPORT PhoneActivity : public PhonePart
{
public:
    using PhonePart::PhonePart;
    /*! Somebody uses the phone. */
    void activate() { tell("active"); }
    /*! Nobody uses it any more. */
    void standBy() { tell("standby"); }
    /*! Sets a further status of the power manager, known or new: a line of at most 120 bytes. */
    void setStatus(const QString &name, const QString &value) { tell("status", {name, value}); }
};

/*! The battery and its chargers. */
class OZ_TESTING_EXPORT PhoneBattery : public PhonePart
{
public:
    using PhonePart::PhonePart;
    /*! Connects a charger by wire. */
    void plug() { tell("plug"); }
    /*! Disconnects it. */
    void unplug() { tell("unplug"); }
    /*! Lays the phone on a wireless charger, which sees the receiver \a id. */
    void layOnCharger(const QString &id) { tell("wireless", {id}); }
    /*! Takes it from there. */
    void takeFromCharger() { tell("wireless"); }
    /*! Sets the charge, 0 to 100 percent. */
    void setLevel(int percent) { tell("level", {QString::number(percent)}); }
    /*! Sets the temperature, -100 to 200 degrees Celsius; it takes charge from 0 to 45 only. */
    void setTemperature(double celsius) { tell("temperature", {QString::number(celsius)}); }
    /*! Lets nobody know the temperature. */
    void loseTemperature() { tell("temperature", {QStringLiteral("unknown")}); }
    /*! Sets the condition. */
    void setCondition(oz::device::BatteryCondition::Type condition);
    /*! Keeps the charge as it is, or lets it move by itself. */
    void hold(bool on = true) { turn("hold", on); }
    /*! Takes the battery out. */
    void remove() { tell("remove"); }
    /*! Puts the battery in. */
    void insert() { tell("insert"); }
};

/*! One of the cellular networks around the phone. */
class OZ_TESTING_EXPORT PhoneNetwork : public PhonePart
{
public:
    using PhonePart::PhonePart;
    /*! Lets it serve, in the place of one of its kind. */
    void serve() { tell("serve"); }
    /*! The phone leaves it. */
    void leave() { tell("leave"); }
    /*! Sets its signal strength, -150 to -1 dBm. */
    void setRssi(int dbm) { tell("rssi", {QString::number(dbm)}); }
    /*! Sets the operator's name, which is shown too. */
    void setOperator(const QString &name) { tell("operator", {name}); }
    /*! Makes it a network of others, or of the phone's own operator. */
    void setRoaming(bool is) { turn("roaming", is); }
    /*! Hides the roaming there from the user. */
    void setRoamingSuppressed(bool is) { turn("suppress", is); }
};

/*! The phone's own time. */
class OZ_TESTING_EXPORT PhoneTime
{
public:
    /*! Phone makes it. */
    explicit PhoneTime(PhoneLink &link) : m_link(&link) { }
    /*! Lets time pass at once: up to 1,000,000 seconds. */
    void advance(std::chrono::milliseconds time);
    /*! How much faster than the real time it goes: 0 stands still, at most 100,000. */
    void setSpeed(double factor);

private:
    PhoneLink *m_link;
};

/*! One of the cellular data profiles. */
class OZ_TESTING_EXPORT PhoneProfile : public FaultyPart
{
public:
    using FaultyPart::FaultyPart;
    /*! Enables it, or not. */
    void setEnabled(bool is) { turn("enabled", is); }
    /*! Lets the applications here use it, where it is access-controlled. */
    void setPermitted(bool is) { turn("permitted", is); }
    /*! Ends its connection from the network's side. */
    void drop() { tell("drop"); }
    /*! How it is connected. */
    [[nodiscard]] oz::device::CellularConnectionState::Type connection() const;
};

/*! The displays. */
class OZ_TESTING_EXPORT PhoneDisplays : public PhonePart
{
public:
    using PhonePart::PhonePart;
    /*! Adds an external display, attached, with an identifier of 0 to 9999; one called "miracast..." is
     * wireless. Sizes are in pixels, and in millimetres, where 0 x 0 says that it is not known. */
    void add(int id, const QString &name, const QSize &pixels, const QSize &millimetres = {0, 0});
    /*! Takes a display away. */
    void remove(int id) { tell("remove", {QString::number(id)}); }
    /*! Attaches a display. */
    void attach(int id) { tell("attach", {QString::number(id)}); }
    /*! Detaches a display. */
    void detach(int id) { tell("detach", {QString::number(id)}); }
    /*! Turns what a display shows: 0, 90, 180 or 270 degrees. */
    void rotate(int id, int degrees) { tell("rotate", {QString::number(id), QString::number(degrees)}); }
    /*! Gives a display another size in pixels. */
    void resize(int id, const QSize &pixels);
};

/*! What the phone is. */
class OZ_TESTING_EXPORT PhoneHardware : public PhonePart
{
public:
    using PhonePart::PhonePart;
    /*! Gives the phone a name. */
    void setName(const QString &name) { tell("name", {name}); }
};

/*! The notification LED, which applications drive. */
class OZ_TESTING_EXPORT PhoneLed : public FaultyPart
{
public:
    using FaultyPart::FaultyPart;
    /*! What it shows now; None where it is dark. */
    [[nodiscard]] oz::device::LedColor::Type lit() const;
    /*! Whether a request of an application is under way. */
    [[nodiscard]] bool isActive() const { return value("active").toBool(); }
    /*! The colour of the newest request under way; None where there is none. */
    [[nodiscard]] oz::device::LedColor::Type color() const;
    /*! All flashes since the service started. */
    [[nodiscard]] int flashes() const { return value("flashes").toInt(); }
};

/*! Miracast, and the sinks around the phone. */
class OZ_TESTING_EXPORT PhoneMiracast : public AnsweringPart
{
public:
    using AnsweringPart::AnsweringPart;
    /*! Brings a sink into range; scans bring it into sight. */
    void bringSink(const QString &name) { tell("sink-appears", {name}); }
    /*! Takes a sink out of range, which ends its session. */
    void takeSinkAway(const QString &name) { tell("sink-goes", {name}); }
    /*! Stops the service: Internal, Application, NotSupported, ItPolicy or P2PFailure. */
    void stop(oz::device::MiracastStopReason::Type reason);
    /*! Starts it again. */
    void start() { tell("start"); }
    /*! Has these sinks in range and sight, and no others. */
    void setInSight(const QStringList &names) { tell("sight", list(names)); }
    /*! Is connecting a sink without being asked, and stays so. */
    void connectTo(const QString &name) { tell("connecting", {name}); }
    /*! Shows the screen on a sink without being asked: Playing or Paused; Stopped: ends that. */
    void setSession(oz::device::MiracastDisplayState::Type state, const QString &name = {});
    /*! Answers the next request of a kind ("scan", "connect", "disconnect", "pause", "resume", "shutdown",
     * "warmup") with an error code of the service, such as -1002. */
    void failNext(const QString &kind, int code) { tell("fail-next", {kind, QString::number(code)}); }
};

/*! How the phone is held. */
class OZ_TESTING_EXPORT PhoneOrientation : public PhonePart
{
public:
    using PhonePart::PhonePart;
    /*! Holds it so. */
    void hold(oz::device::DeviceOrientation::Type orientation);
    /*! Holds it so that its sensor cannot tell how. */
    void blur() { tell("undefined"); }
};

/*! The radio. */
class OZ_TESTING_EXPORT PhoneRadio : public PhonePart
{
public:
    using PhonePart::PhonePart;
    /*! Switches it on or off. */
    void setPower(bool on) { turn("power", on); }
    /*! Lets networks of these technologies serve, and no others. */
    void enable(oz::device::CellularTechnology::Types technologies);
    /*! Switches mobile data on or off. */
    void setData(bool on) { turn("data", on); }
    /*! Allows mobile data while roaming, or not. */
    void setDataRoaming(bool on) { turn("data-roaming", on); }
};

/*! The removable SD card. */
class OZ_TESTING_EXPORT PhoneSdCard : public PhonePart
{
public:
    using PhonePart::PhonePart;
    /*! Inserts a card. */
    void mount() { tell("mount"); }
    /*! Takes it out, busy or not. */
    void unmount() { tell("unmount"); }
    /*! Begins to read or write it, or ends that. */
    void setBusy(bool is) { tell(is ? "busy" : "idle"); }
};

/*! The SIM card. */
class OZ_TESTING_EXPORT PhoneSimCard : public PhonePart
{
public:
    using PhonePart::PhonePart;
    /*! Inserts the card, ready. */
    void insert() { tell("insert"); }
    /*! Takes it out. */
    void remove() { tell("remove"); }
    /*! Gives the inserted card a state; NotDetected takes it out. */
    void setState(oz::device::SimCardState::Type state);
};

/*! The vibration motor, which applications drive. */
class OZ_TESTING_EXPORT PhoneVibration : public PhonePart
{
public:
    using PhonePart::PhonePart;
    /*! A run that is over. */
    struct Run
    {
        std::chrono::milliseconds asked{0}; //!< how long it was to be
        std::chrono::milliseconds ran{0}; //!< how long it was
        int intensity = 0; //!< 1 to 100
        QString end; //!< "done", "stopped" or "replaced"; empty where there was no run
    };
    /*! Puts the motor in, or takes it out. */
    void setPresent(bool is) { turn("present", is); }
    /*! Whether the motor runs. */
    [[nodiscard]] bool isRunning() const { return value("running").toBool(); }
    /*! 1 to 100; 0 while it does not run. */
    [[nodiscard]] int intensity() const { return value("intensity").toInt(); }
    /*! How often it has been started since the service started. */
    [[nodiscard]] int runs() const { return value("runs").toInt(); }
    /*! The run that ended last. */
    [[nodiscard]] Run last() const;
};

/*! Wi-Fi Direct, and the peers around the phone. */
class OZ_TESTING_EXPORT PhoneWiFiDirect : public FaultyPart
{
public:
    using FaultyPart::FaultyPart;
    /*! Switches it on or off. */
    void setEnabled(bool is) { turn("enabled", is); }
    /*! Gives the phone Wi-Fi Direct, or takes it away. */
    void setSupported(bool is) { turn("supported", is); }
    /*! Brings a peer into range; scans bring it into sight. */
    void bringPeer(const QString &name) { tell("peer-appears", {name}); }
    /*! Takes a peer out of range and sight. */
    void takePeerAway(const QString &name) { tell("peer-goes", {name}); }
    /*! Lets a peer join the group that the phone owns. */
    void letPeerJoin(const QString &name) { tell("peer-joins", {name}); }
    /*! Lets a peer leave the phone's group. */
    void letPeerLeave(const QString &name) { tell("peer-leaves", {name}); }
    /*! Has these peers in range and sight, and no others. */
    void setInSight(const QStringList &names) { tell("sight", list(names)); }
    /*! Looks for peers without being asked, or ends that. */
    void setScanning(bool is) { turn("scanning", is); }
    /*! Is connecting a peer without being asked, or ends that. */
    void setConnecting(bool is) { turn("connecting", is); }
    /*! Puts the phone into a group with these peers: as GroupOwner; as Client of the first one; NoRole: out
     * of its group. */
    void setGroup(oz::device::WiFiDirectRole::Type role, const QStringList &names = {});
    /*! Answers the next request of a kind ("scan", "connect", "cancel-connect", "start-session",
     * "stop-session", "get-ip-address") with an errno. */
    void failNext(const QString &kind, int error) { tell("fail-next", {kind, QString::number(error)}); }
};

} // namespace oz::testing
