#include "hardware/LinuxHardware.hpp"

#include "hardware/KernelInventory.hpp"

#include <ModemManager.h>

#include <chrono>

namespace oz::services {

namespace {

using namespace std::chrono_literals;

// One keyboard is several devices, and one that goes is told of before it is gone from /sys.
constexpr auto LongestChange = 200ms;

const QString HostPath = QStringLiteral("/org/freedesktop/hostname1");
const QString HostInterface = QStringLiteral("org.freedesktop.hostname1");

} // namespace

LinuxHardware::LinuxHardware(std::shared_ptr<SystemBus> bus, std::shared_ptr<ModemManager> modems)
    : m_modems(std::move(modems)), m_hostnamed(std::move(bus), QStringLiteral("org.freedesktop.hostname1"),
                                       QStringLiteral("systemd"), BusService::EndsWhenIdle),
      m_objects(m_hostnamed), m_inputs(QStringLiteral("input"), [this] { m_change.start(); }),
      m_connectors(QStringLiteral("drm"), [this] { m_change.start(); }),
      m_reading(this, [this](const Hardware &kernel) {
          m_kernel = kernel;
          tell();
      })
{
    connect(
        &m_hostnamed, &BusService::appeared, this, [this] { m_objects.follow(HostPath, {HostInterface}); });
    connect(&m_objects, &BusObjects::changed, this, &LinuxHardware::hearNames);
    // Without it the rest is told.
    const auto goOn = [this] {
        if (!m_names)
            m_names.emplace();
        tell();
    };
    connect(&m_objects, &BusObjects::failed, this, goOn);
    connect(&m_hostnamed, &BusService::vanished, this, goOn);
    connect(m_modems.get(), &ModemManager::changed, this, &LinuxHardware::hearModem);
    m_change.setSingleShot(true);
    m_change.setInterval(LongestChange);
    m_change.callOnTimeout(this, [this] { m_reading.begin(kernelInventory); });
    m_reading.begin(kernelInventory);
}

void LinuxHardware::hearNames()
{
    m_names = m_objects.all().value(HostPath).value(HostInterface);
    tell();
}

void LinuxHardware::hearModem()
{
    if (!m_modems->absence().isEmpty() || !m_modems->isSettled())
        return;
    m_modem = m_modems->modem({}, m_modem);
    const auto text = [this](const char *interface, const char *name) -> std::optional<QString> {
        const QString value =
            m_modems->property(m_modem, QLatin1String(interface), QLatin1String(name)).toString();
        return value.isEmpty() ? std::nullopt : std::optional(value);
    };
    m_imei = text(MM_DBUS_INTERFACE_MODEM_MODEM3GPP, "Imei");
    m_meid = text(MM_DBUS_INTERFACE_MODEM_MODEMCDMA, "Meid");
    tell();
}

void LinuxHardware::tell()
{
    if (!m_kernel || !m_names)
        return;
    Hardware state = *m_kernel;
    const auto readText = [this](std::optional<QString> *field, const QStringList &properties) {
        for (const QString &property : properties) {
            if (const QString text = m_names->value(property).toString(); !text.isEmpty()) {
                *field = text;
                return;
            }
        }
    };
    readText(&state.deviceName, {QStringLiteral("PrettyHostname"), QStringLiteral("Hostname")});
    state.imei = m_imei;
    state.meid = m_meid;
    readText(&state.modelName, {QStringLiteral("HardwareModel")});
    know(state);
}

} // namespace oz::services
