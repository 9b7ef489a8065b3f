#include "display/WaylandDisplays.hpp"

#include "display/PanelNames.hpp"
#include "linux/Worker.hpp"

#include <oz/Limits.hpp>

#include <QFileInfo>
#include <QSocketNotifier>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <functional>
#include <map>
#include <poll.h>
#include <wayland-client.h>
#include <xdg-output-unstable-v1-client-protocol.h>

namespace oz::services {

namespace {

using namespace std::chrono_literals;

int degreesOf(int transform)
{
    // Those from 4 on are the same turns of a mirrored output.
    return transform % 4 * 90;
}

} // namespace

class WaylandDisplays::Connection
{
public:
    using Lost = std::function<void()>;
    using Told = std::function<void(const QMap<QByteArray, Display> &outputs)>;

    Connection(wl_display *display, Told told, Lost lost)
        : m_display(display), m_told(std::move(told)), m_lost(std::move(lost)),
          m_readable(wl_display_get_fd(display), QSocketNotifier::Read),
          m_writable(wl_display_get_fd(display), QSocketNotifier::Write)
    {
        m_registry = wl_display_get_registry(display);
        static const wl_registry_listener listener{
            [](void *self, wl_registry *, uint32_t number, const char *interface, uint32_t version) {
                static_cast<Connection *>(self)->onGlobal(number, interface, version);
            },
            [](void *self, wl_registry *, uint32_t number) {
                static_cast<Connection *>(self)->onGlobalGone(number);
            }};
        wl_registry_add_listener(m_registry, &listener, this);
        sync();
        m_writable.setEnabled(false);
        QObject::connect(&m_readable, &QSocketNotifier::activated, &m_readable, [this] { receive(); });
        QObject::connect(&m_writable, &QSocketNotifier::activated, &m_writable, [this] { flush(); });
        flush();
    }
    ~Connection()
    {
        m_outputs.clear();
        if (m_manager)
            zxdg_output_manager_v1_destroy(m_manager);
        if (m_sync)
            wl_callback_destroy(m_sync);
        wl_registry_destroy(m_registry);
        wl_display_disconnect(m_display);
    }
    Connection(const Connection &) = delete;
    Connection &operator=(const Connection &) = delete;

private:
    struct Output
    {
        explicit Output(Connection *owner, wl_output *bound, uint32_t version)
            : connection(owner), output(bound), hasDone(version >= WL_OUTPUT_DONE_SINCE_VERSION)
        {
        }
        ~Output()
        {
            if (xdg)
                zxdg_output_v1_destroy(xdg);
            wl_output_destroy(output);
        }
        Output(const Output &) = delete;
        Output &operator=(const Output &) = delete;

        Connection *connection;
        wl_output *output;
        zxdg_output_v1 *xdg = nullptr;
        bool hasDone; // whether the end of several changes is told
        QByteArray name;
        Display display;
    };

    void onGlobal(uint32_t number, const char *interface, uint32_t version)
    {
        if (std::strcmp(interface, wl_output_interface.name) == 0) {
            version = std::min<uint32_t>(version, WL_OUTPUT_NAME_SINCE_VERSION);
            auto *bound =
                static_cast<wl_output *>(wl_registry_bind(m_registry, number, &wl_output_interface, version));
            const auto output = std::make_unique<Output>(this, bound, version).release();
            m_outputs[number].reset(output);
            follow(output);
        } else if (std::strcmp(interface, zxdg_output_manager_v1_interface.name) == 0) {
            // With the second version it tells names.
            m_manager = static_cast<zxdg_output_manager_v1 *>(wl_registry_bind(
                m_registry, number, &zxdg_output_manager_v1_interface, std::min<uint32_t>(version, 2)));
            for (const auto &[other, output] : m_outputs)
                followName(output.get());
        }
    }

    void onGlobalGone(uint32_t number)
    {
        if (m_outputs.erase(number) > 0)
            tell();
    }

    void follow(Output *output)
    {
        static const wl_output_listener listener{
            [](void *self, wl_output *, int32_t, int32_t, int32_t width, int32_t height, int32_t,
                const char *, const char *, int32_t transform) {
                auto *of = static_cast<Output *>(self);
                of->display.physicalSize = QSize(width, height);
                of->display.rotation = degreesOf(transform);
                of->connection->onPart(*of);
            },
            [](void *self, wl_output *, uint32_t flags, int32_t width, int32_t height, int32_t) {
                auto *of = static_cast<Output *>(self);
                if (flags & WL_OUTPUT_MODE_CURRENT)
                    of->display.size = QSize(width, height);
                of->connection->onPart(*of);
            },
            [](void *self, wl_output *) { static_cast<Output *>(self)->connection->tell(); },
            [](void *, wl_output *, int32_t) {},
            [](void *self, wl_output *, const char *name) { static_cast<Output *>(self)->name = name; },
            [](void *, wl_output *, const char *) {}};
        wl_output_add_listener(output->output, &listener, output);
        followName(output);
    }

    // Older compositors have names for outputs there only.
    void followName(Output *output)
    {
        if (!m_manager || output->xdg)
            return;
        static const zxdg_output_v1_listener listener{[](void *, zxdg_output_v1 *, int32_t, int32_t) {},
            [](void *, zxdg_output_v1 *, int32_t, int32_t) {}, [](void *, zxdg_output_v1 *) {},
            [](void *self, zxdg_output_v1 *, const char *name) { static_cast<Output *>(self)->name = name; },
            [](void *, zxdg_output_v1 *, const char *) {}};
        output->xdg = zxdg_output_manager_v1_get_xdg_output(m_manager, output->output);
        zxdg_output_v1_add_listener(output->xdg, &listener, output);
        sync(); // the name comes after the rest
    }

    void onPart(const Output &output)
    {
        if (!output.hasDone)
            tell();
    }

    // Once what has been asked for is there, all is told.
    void sync()
    {
        if (m_sync)
            wl_callback_destroy(m_sync);
        m_sync = wl_display_sync(m_display);
        static const wl_callback_listener listener{[](void *self, wl_callback *, uint32_t) {
            auto *connection = static_cast<Connection *>(self);
            wl_callback_destroy(std::exchange(connection->m_sync, nullptr));
            // The first one ends the list of what there is, whose parts are asked for meanwhile.
            if (std::exchange(connection->m_isListed, true))
                connection->tell();
            else
                connection->sync();
        }};
        wl_callback_add_listener(m_sync, &listener, this);
    }

    void tell() { m_hasNews = true; }

    void receive()
    {
        while (wl_display_prepare_read(m_display) != 0) {
            if (wl_display_dispatch_pending(m_display) < 0)
                return m_lost();
        }
        if (wl_display_read_events(m_display) < 0 || wl_display_dispatch_pending(m_display) < 0)
            return m_lost();
        if (!flush())
            return;
        if (m_isListed && !m_sync && std::exchange(m_hasNews, false)) {
            QMap<QByteArray, Display> outputs;
            for (const auto &[number, output] : m_outputs) {
                // A compositor that has no names still has numbers.
                QByteArray name = output->name;
                if (name.isEmpty())
                    name = "output-" + QByteArray::number(number);
                Display display = output->display;
                display.name = QString::fromUtf8(name);
                display.kind = displayKind(isPanelName(name));
                display.detachable = !isInternal(display);
                display.attached = true;
                outputs.insert(name, display);
            }
            m_told(outputs); // which may end this
        }
    }

    // False once the connection is lost.
    bool flush()
    {
        const int result = wl_display_flush(m_display);
        m_writable.setEnabled(result < 0 && errno == EAGAIN);
        if (result >= 0 || errno == EAGAIN)
            return true;
        m_lost();
        return false;
    }

    wl_display *m_display;
    Told m_told;
    Lost m_lost;
    QSocketNotifier m_readable;
    QSocketNotifier m_writable;
    wl_registry *m_registry = nullptr;
    wl_callback *m_sync = nullptr;
    zxdg_output_manager_v1 *m_manager = nullptr;
    std::map<uint32_t, std::unique_ptr<Output>> m_outputs;
    bool m_isListed = false;
    bool m_hasNews = false;
};

QString WaylandDisplays::sessionServer()
{
    const QString named = qEnvironmentVariable("WAYLAND_DISPLAY");
    if (!named.isEmpty())
        return named;
    // A service that was started with the session's bus has not got the variable.
    const QString first = QStringLiteral("wayland-0");
    const QString folder = qEnvironmentVariable("XDG_RUNTIME_DIR");
    return !folder.isEmpty() && QFileInfo::exists(folder + u'/' + first) ? first : QString();
}

WaylandDisplays::WaylandDisplays(const QString &server)
    : m_server(server.isEmpty() ? sessionServer() : server), m_retry(250ms, 10s)
{
    m_retry.setTimerType(Qt::CoarseTimer);
    m_retry.callOnTimeout(this, [this] { connectToServer(); });
    m_grace.setSingleShot(true);
    m_grace.setInterval(graceTime());
    m_grace.callOnTimeout(this, [this] {
        setAbsent(QLatin1String("the compositor ") + m_server + QLatin1String(" does not answer"));
    });
    if (m_server.isEmpty())
        setAbsent(QStringLiteral("WAYLAND_DISPLAY names no compositor"));
    else
        connectToServer();
}

WaylandDisplays::~WaylandDisplays() = default;

void WaylandDisplays::connectToServer()
{
    m_grace.start();
    inWorker(
        this, [name = m_server.toLocal8Bit()] { return wl_display_connect(name.constData()); },
        [this](wl_display *display) {
            if (!display) {
                m_grace.stop();
                onLost(QLatin1String("no compositor is reachable at WAYLAND_DISPLAY=") + m_server);
                return;
            }
            m_connection = std::make_unique<Connection>(
                display, [this](const auto &outputs) { onOutputs(outputs); },
                [this] {
                    // Not within its own call.
                    QTimer::singleShot(0, this, [this] {
                        onLost(QLatin1String("the compositor ") + m_server + QLatin1String(" is gone"));
                    });
                });
        });
}

void WaylandDisplays::onLost(const QString &reason)
{
    m_connection.reset();
    m_grace.stop();
    setAbsent(reason);
    m_retry.startLater();
}

void WaylandDisplays::onOutputs(const QMap<QByteArray, Display> &outputs)
{
    m_grace.stop();
    m_retry.reset();
    for (auto &[id, display] : m_displays.displays)
        display.attached = false;
    for (const Display &output : outputs) {
        const auto known = std::find_if(m_displays.displays.begin(), m_displays.displays.end(),
            [&](const auto &entry) { return entry.second.name == output.name; });
        const int id = known == m_displays.displays.end() ? int(m_displays.displays.size()) : known->first;
        m_displays.displays[id] = output;
    }
    know(m_displays);
}

} // namespace oz::services
