#pragma once

#include "harness/Process.hpp"
#include "harness/Testing.hpp"
#include "services/AtModem.hpp"

#include <QFile>
#include <QTemporaryDir>

#include <functional>
#include <list>
#include <map>
#include <memory>
#include <optional>

namespace oz::harness {

/*! A service that feeds a facility, and how it is driven. */
class Rig
{
public:
    virtual ~Rig() = default;
    /*! Starts the service, where there is one beside the daemon. */
    virtual void start() { }
    /*! Lets the service die. */
    virtual void stop() { }
    /*! Lets the service stand still, or go on. */
    virtual void stall(bool) { }
    /*! True if the service is another process than the daemon. */
    [[nodiscard]] virtual bool isProcess() const { return false; }
    /*! The daemon's arguments. */
    [[nodiscard]] virtual QStringList arguments() const { return {"--simulated"}; }
    [[nodiscard]] virtual QProcessEnvironment environment() const
    {
        return QProcessEnvironment::systemEnvironment();
    }
    /*! For how many seconds the daemon bears that the service is away. */
    [[nodiscard]] virtual int graceTime() const { return 2; }
    /*! Changes something, this way and back. */
    virtual void change(bool there) = 0;
};

/*! A message bus of the test's own, which programs take for the system's. */
class PrivateBus
{
public:
    PrivateBus();
    void enter(QProcessEnvironment *environment) const;

private:
    Process m_daemon;
    QString m_address;
};

/*! Devices in a /sys of the test's own, as umockdev plays them. */
class MockDevices
{
public:
    /*! The devices that \a description describes. */
    explicit MockDevices(const QByteArray &description);
    void add(const QByteArray &description);
    void set(const QString &device, const QString &attribute, const QString &value);
    void remove(const QString &device);
    /*! Has the kernel tell of a device. */
    void event(const QString &device, const QString &action);
    /*! Reading this file of /sys takes for ever, as over a controller that hangs; waits until somebody does,
     * for which there is a cause. */
    void hang(const QString &path, const std::function<void()> &cause);
    /*! A file of /sys or /proc that belongs to no device. */
    void write(const QString &path, const QByteArray &content);
    /*! Plays the motor that is the input device \a file. */
    void emulateRumble(const QString &file) { order("rumble " + file); }
    /*! The next request to it. */
    QString heard();
    void enter(QProcessEnvironment *environment) const;
    [[nodiscard]] QString file(const QString &path) const { return m_folder + path; }

private:
    void order(const QString &line);

    QTemporaryDir m_files;
    std::list<QFile> m_hanging;
    Process m_process;
    QString m_folder;
    QStringList m_heard;
};

/*! A rig of a service of the system bus, over devices that are not there. */
class BusRig : public Rig
{
public:
    void start() override;
    void stop() override { m_service.end(); }
    void stall(bool stalls) override { m_service.stall(stalls); }
    [[nodiscard]] bool isProcess() const override { return true; }
    [[nodiscard]] QStringList arguments() const override { return {"--simulated", "--source", m_source}; }
    [[nodiscard]] QProcessEnvironment environment() const override;
    /*! Before the start: whoever asks the service may do everything. */
    void allowAll();

protected:
    /*! By the daemon's \a source line, the \a name that the service takes on the bus, and its \a program. */
    BusRig(const QString &source, const QString &name, const QStringList &program, const QByteArray &devices);

    [[nodiscard]] MockDevices &devices() { return m_devices; }
    /*! Calls a method of a service on the bus, this one where \a name is empty: the object's path, the method
     * with its interface, and what it takes. Gives the answer. */
    QString call(const QStringList &arguments, const QString &name = {}) const;
    /*! Waits until the service has written \a text after the last call. */
    void waitUntilSaid(const QByteArray &text);
    /*! A program on the bus that takes the \a name there. */
    void runOnBus(Process *process, const QStringList &program, const QString &name);

private:
    QString m_source;
    QString m_name;
    QStringList m_program;
    PrivateBus m_bus;
    MockDevices m_devices;
    Process m_authority; // without which services do some things for nobody, or for root alone
    Process m_service;
};

/*! A Wayland compositor without a screen. It does not run as root, so root becomes another user for it. */
class SwayRig final : public Rig
{
public:
    SwayRig();
    void start() override;
    void stop() override { m_compositor.end(); }
    void stall(bool stalls) override { m_compositor.stall(stalls); }
    [[nodiscard]] bool isProcess() const override { return true; }
    [[nodiscard]] QStringList arguments() const override
    {
        return {"--simulated", "--source", "display=wayland display=" + m_folder.filePath("wayland-1")};
    }
    /*! The output has 1024x768 or 800x600 pixels. */
    void change(bool there) override;
    /*! Tells the compositor something; whether it does that. */
    bool order(const QStringList &words);

private:
    [[nodiscard]] QString socket() const { return m_folder.filePath("ipc"); }

    QTemporaryDir m_folder;
    Process m_compositor;
};

/*! UPower over a battery and a charger that are not there. */
class UPowerRig final : public BusRig
{
public:
    static constexpr int FirstLevel = 80;

    UPowerRig();
    /*! The battery is at 70 % or at its first level. */
    void change(bool there) override;
    void setLevel(int percent);
    /*! The kernel does not answer for the battery any more. */
    void hangKernel();
};

/*! UDisks2 over a card that is not there, and that is mounted at first. */
class UDisksRig final : public BusRig
{
public:
    UDisksRig();
    void start() override;
    [[nodiscard]] QProcessEnvironment environment() const override;
    /*! The card's file system is unmounted, or mounted. */
    void change(bool there) override;
    /*! The kernel has a read from the card under way, or has not. */
    void readCard(bool reads);
    /*! The kernel does not answer for the card any more. */
    void hangKernel();
    void pullCard();
    /*! Where the card's file system is mounted; nowhere where that is empty. */
    void mount(const QByteArray &place);
    /*! Has UDisks2 check the file system, which takes until endJob(). */
    void startJob();
    void endJob();

private:
    void awaitMountPoints();

    QByteArray m_place; // where the file system is mounted
    QTemporaryDir m_tools;
    Process m_job;
};

/*! hostnamed, over a machine that is not there. */
class HardwareRig final : public BusRig
{
public:
    HardwareRig();
    [[nodiscard]] QProcessEnvironment environment() const override;
    /*! A keyboard is plugged in, or out. */
    void change(bool there) override;
    /*! The machine is one with a device tree. */
    void placeDeviceTree();
};

/*! A stand-in for logind, with one session. */
class LogindRig final : public BusRig
{
public:
    LogindRig();
    void start() override;
    /*! Nobody uses the device, or somebody does. */
    void change(bool there) override;
    void endSession();
};

/*! iio-sensor-proxy over an accelerometer that is not there. */
class SensorRig final : public BusRig
{
public:
    SensorRig();
    [[nodiscard]] QProcessEnvironment environment() const override;
    /*! The device is held with its left side up, or its top. */
    void change(bool there) override;
    /*! Waits until the accelerometer is not read any more. */
    void waitForRelease();
};

/*! ModemManager over a modem that is not there. */
class ModemRig : public BusRig
{
public:
    explicit ModemRig(const QString &facility);
    void start() override;
    /*! It takes its time to find the modem. */
    [[nodiscard]] int graceTime() const override { return 8; }
    /*! The modem is abroad in an older network, or at home. */
    void change(bool there) override;
    /*! The output of mmcli; empty where it fails. */
    QString order(const QStringList &words) const;
    /*! Plugs a modem in, by a name of its own. */
    void plug(const AtModem &plugged, const QString &name);
    /*! The modem is taken away from ModemManager, or comes back. */
    void unplug(bool isOut);

    AtModem modem;
    QString plugin = "generic"; //!< of ModemManager, for its modems

private:
    Process m_inhibitor;
};

/*!
 * A real NetworkManager beside ModemManager, with a mobile connection "Internet" over its modem. It needs a
 * network of its own, so this is for root.
 */
class MobileDataRig final : public ModemRig
{
public:
    MobileDataRig() : ModemRig("simcard") { }
    void start() override;
    /*! The connection breaks down. */
    void hangUp();

private:
    Process m_manager;
};

/*! A stand-in for ModemManager, whose only modem has two slots with a SIM card in each. */
class TwoSlotRig final : public BusRig
{
public:
    TwoSlotRig();
    void start() override;
    /*! The second slot is the one in use, or the first. */
    void change(bool there) override;
};

/*! NetworkManager as its mock template plays it, with a mobile connection "Internet (Home)". */
class NetworkManagerRig final : public BusRig
{
public:
    NetworkManagerRig();
    void start() override;
    /*! The connection is activated, or not, by somebody else. */
    void change(bool there) override;
    /*! The connection is on its way down. */
    void goDown();
    /*! Has it refuse to activate anything, as for a user without the right. */
    void refuse();
    /*! Calls a method as the system's tools do, and gives the answer. */
    QString call(const QString &path, const QString &method, const QStringList &arguments) const;

private:
    QString m_connection;
    QString m_active;
};

/*! A stand-in for wpa_supplicant with one radio, which says what the real one was recorded to say. */
class WpaSupplicantRig final : public BusRig
{
public:
    WpaSupplicantRig();
    /*! Wi-Fi is blocked, or not. */
    void change(bool there) override;
    /*! Has something happen on the air, as the stand-in's script names it. */
    QString happen(const QString &what, const QStringList &arguments = {}) const;
    /*! What it was asked for since the last call. */
    [[nodiscard]] QString asked() const { return happen("Asked").section('\'', 1, 1); }
};

/*! A test of a daemon that a service feeds. */
class RigTest : public DeviceTest
{
protected:
    /*! With the grace time that the rig needs, or another. */
    explicit RigTest(std::unique_ptr<Rig> service, std::optional<int> graceTime = {});
    ~RigTest() override;
    /*! Starts the daemon, with further arguments after those of the service, and waits until it is ready. */
    void startDaemon(const QStringList &arguments = {});
    /*! The state of a facility's source by the daemon's account, and the reason where there is one. */
    [[nodiscard]] static QString sourceOf(const QString &facility);

    std::unique_ptr<Rig> rig;
    QProcess daemon;
};

} // namespace oz::harness
