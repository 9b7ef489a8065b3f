#include "display/XrandrDisplays.hpp"

#include "display/PanelNames.hpp"
#include "linux/Worker.hpp"

#include <oz/GrowingPause.hpp>
#include <oz/Limits.hpp>

#include <QMap>
#include <QPointer>

#include <chrono>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>
#include <xcb/randr.h>

namespace oz::services {

namespace {

using namespace std::chrono_literals;

template <typename Reply>
struct FreeReply
{
    void operator()(Reply *reply) const { std::free(reply); }
};

// The reply to a request, or nothing: X tells by an error that something is gone by now.
template <typename Reply, typename Cookie>
std::unique_ptr<Reply, FreeReply<Reply>> replyOf(xcb_connection_t *connection, Cookie cookie,
    Reply *(*reply)(xcb_connection_t *, Cookie, xcb_generic_error_t **))
{
    xcb_generic_error_t *error = nullptr;
    std::unique_ptr<Reply, FreeReply<Reply>> result(reply(connection, cookie, &error));
    std::free(error);
    return result;
}

xcb_atom_t atomNamed(xcb_connection_t *connection, const QByteArray &name)
{
    const auto atom = replyOf(connection,
        xcb_intern_atom(connection, 0, quint16(name.size()), name.constData()), xcb_intern_atom_reply);
    return atom ? atom->atom : xcb_atom_t(XCB_ATOM_NONE);
}

QByteArray atomName(xcb_connection_t *connection, xcb_atom_t atom)
{
    const auto name = replyOf(connection, xcb_get_atom_name(connection, atom), xcb_get_atom_name_reply);
    return name ? QByteArray(xcb_get_atom_name_name(name.get()), xcb_get_atom_name_name_length(name.get()))
                : QByteArray();
}

int degreesOf(quint16 rotation)
{
    if (rotation & XCB_RANDR_ROTATION_ROTATE_90)
        return 90;
    if (rotation & XCB_RANDR_ROTATION_ROTATE_180)
        return 180;
    return rotation & XCB_RANDR_ROTATION_ROTATE_270 ? 270 : 0;
}

} // namespace

// The state that the source and its reader share. The reader may outlive the source: a server that does not
// answer cannot be hurried.
struct XrandrDisplays::Shared
{
    ~Shared() { ::close(stop); }

    // Has the source do something on its thread, where it is still there.
    void tell(const std::function<void(XrandrDisplays &source)> &what)
    {
        const std::lock_guard locker(mutex);
        if (source)
            QMetaObject::invokeMethod(
                source, [what, receiver = source] { what(*receiver); }, Qt::QueuedConnection);
    }

    std::mutex mutex;
    XrandrDisplays *source = nullptr; // none once it is gone
    const int stop = ::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK); // readable once the reader shall end
};

class XrandrDisplays::Reader
{
public:
    Reader(std::shared_ptr<Shared> shared, const QString &server)
        : m_shared(std::move(shared)), m_server(server)
    {
    }

    void run()
    {
        GrowingPause<> pause(200ms, 2s); // between attempts to connect
        do {
            wait(true);
            const QString problem = connectToServer();
            wait(false);
            if (problem.isEmpty()) {
                pause.reset();
                follow();
            }
            const QString reason = problem.isEmpty() ? lost() : problem;
            m_connection.reset();
            m_shared->tell([reason](XrandrDisplays &source) { source.setAbsent(reason); });
        } while (!isStopped(pause.next()));
    }

private:
    struct Disconnect
    {
        void operator()(xcb_connection_t *connection) const { xcb_disconnect(connection); }
    };

    struct Output
    {
        int id = 0;
        bool hasMode = false;
        bool forced = false; // had no mode, and was given one without being connected
    };

    [[nodiscard]] QString lost() const
    {
        return QLatin1String("the X server ") + m_server + QLatin1String(" is gone");
    }

    void wait(bool waits)
    {
        m_shared->tell([waits](XrandrDisplays &source) { source.onWaiting(waits); });
    }

    // Waits this long for the order to end; true where it came.
    [[nodiscard]] bool isStopped(std::chrono::milliseconds time) const
    {
        pollfd stop{m_shared->stop, POLLIN, 0};
        return ::poll(&stop, 1, int(time.count())) > 0;
    }

    // The reason why it could not connect; empty where it did.
    [[nodiscard]] QString connectToServer()
    {
        int number = 0;
        m_connection.reset(xcb_connect(m_server.toLocal8Bit().constData(), &number));
        xcb_connection_t *connection = m_connection.get();
        if (xcb_connection_has_error(connection))
            return QLatin1String("no X server is reachable at DISPLAY=") + m_server;
        const xcb_query_extension_reply_t *randr = xcb_get_extension_data(connection, &xcb_randr_id);
        const auto version = randr && randr->present
            ? replyOf(connection, xcb_randr_query_version(connection, 1, 2), xcb_randr_query_version_reply)
            : nullptr;
        if (!version || (version->major_version == 1 && version->minor_version < 2))
            return QLatin1String("the X server ") + m_server + QLatin1String(" is without RandR 1.2");
        xcb_screen_iterator_t screen = xcb_setup_roots_iterator(xcb_get_setup(connection));
        for (; number > 0 && screen.rem > 1; --number)
            xcb_screen_next(&screen);
        m_root = screen.data->root;
        m_connectorType = atomNamed(connection, QByteArrayLiteral("ConnectorType"));
        xcb_randr_select_input(connection, m_root,
            XCB_RANDR_NOTIFY_MASK_SCREEN_CHANGE | XCB_RANDR_NOTIFY_MASK_CRTC_CHANGE
                | XCB_RANDR_NOTIFY_MASK_OUTPUT_CHANGE);
        // Has the server look at its outputs, which some do not do by themselves.
        (void)replyOf(connection, xcb_randr_get_screen_resources(connection, m_root),
            xcb_randr_get_screen_resources_reply);
        return {};
    }

    // Until the server is gone, or the source.
    void follow()
    {
        xcb_connection_t *connection = m_connection.get();
        read();
        for (;;) {
            // Reading takes further events in, of which the descriptor tells nothing any more.
            while (takeEvents())
                read();
            pollfd sockets[] = {
                {xcb_get_file_descriptor(connection), POLLIN, 0}, {m_shared->stop, POLLIN, 0}};
            if (xcb_connection_has_error(connection) || ::poll(sockets, 2, -1) < 0 || sockets[1].revents)
                return;
        }
    }

    // True if any came.
    [[nodiscard]] bool takeEvents()
    {
        bool any = false;
        while (xcb_generic_event_t *event = xcb_poll_for_event(m_connection.get())) {
            std::free(event);
            any = true;
        }
        return any;
    }

    void read()
    {
        wait(true);
        const auto displays = readDisplays();
        wait(false);
        if (displays)
            m_shared->tell([state = *displays](XrandrDisplays &source) { source.know(state); });
    }

    [[nodiscard]] std::optional<DisplayState> readDisplays()
    {
        xcb_connection_t *connection = m_connection.get();
        const auto resources = replyOf(connection, xcb_randr_get_screen_resources_current(connection, m_root),
            xcb_randr_get_screen_resources_current_reply);
        if (!resources)
            return std::nullopt;
        const xcb_timestamp_t time = resources->config_timestamp;
        QMap<xcb_randr_mode_t, QSize> modes;
        const xcb_randr_mode_info_t *mode = xcb_randr_get_screen_resources_current_modes(resources.get());
        for (int i = 0; i < xcb_randr_get_screen_resources_current_modes_length(resources.get()); ++i, ++mode)
            modes.insert(mode->id, QSize(mode->width, mode->height));

        DisplayState state;
        const xcb_randr_output_t *outputs = xcb_randr_get_screen_resources_current_outputs(resources.get());
        for (int i = 0; i < xcb_randr_get_screen_resources_current_outputs_length(resources.get()); ++i) {
            const auto output = replyOf(connection, xcb_randr_get_output_info(connection, outputs[i], time),
                xcb_randr_get_output_info_reply);
            if (!output)
                continue;
            const QByteArray name(
                reinterpret_cast<const char *>(xcb_randr_get_output_info_name(output.get())),
                xcb_randr_get_output_info_name_length(output.get()));
            const auto crtc = output->crtc == XCB_NONE
                ? nullptr
                : replyOf(connection, xcb_randr_get_crtc_info(connection, output->crtc, time),
                    xcb_randr_get_crtc_info_reply);
            if (!m_outputs.contains(name))
                m_outputs.insert(name, {int(m_outputs.size())});
            Output &known = m_outputs[name];
            const bool hasMode = crtc && crtc->mode != XCB_NONE;
            const bool connected = output->connection == XCB_RANDR_CONNECTION_CONNECTED;
            known.forced = hasMode && !connected && (known.forced || !known.hasMode);
            known.hasMode = hasMode;

            const bool panel = isPanel(outputs[i], name);
            Display display;
            display.name = QString::fromUtf8(name);
            display.kind = displayKind(panel);
            display.detachable = !panel;
            display.attached = hasMode && (connected || known.forced);
            display.physicalSize = QSize(int(output->mm_width), int(output->mm_height));
            if (hasMode) {
                display.size = modes.value(crtc->mode);
                display.rotation = degreesOf(crtc->rotation);
            } else if (xcb_randr_get_output_info_modes_length(output.get()) > 0) {
                display.size = modes.value(*xcb_randr_get_output_info_modes(output.get()));
            }
            state.displays[known.id] = display;
        }
        // The server may have gone away meanwhile, which leaves the list incomplete.
        return xcb_connection_has_error(connection) ? std::nullopt : std::optional(state);
    }

    [[nodiscard]] bool isPanel(xcb_randr_output_t output, const QByteArray &name)
    {
        xcb_connection_t *connection = m_connection.get();
        const auto type = replyOf(connection,
            xcb_randr_get_output_property(connection, output, m_connectorType, XCB_ATOM_ATOM, 0, 1, 0, 0),
            xcb_randr_get_output_property_reply);
        if (type && type->format == 32 && type->num_items == 1) {
            xcb_atom_t value = XCB_ATOM_NONE;
            std::memcpy(&value, xcb_randr_get_output_property_data(type.get()), sizeof value);
            return atomName(connection, value) == "Panel";
        }
        return isPanelName(name);
    }

    std::shared_ptr<Shared> m_shared;
    QString m_server;
    std::unique_ptr<xcb_connection_t, Disconnect> m_connection;
    xcb_window_t m_root = 0;
    xcb_atom_t m_connectorType = 0;
    QMap<QByteArray, Output> m_outputs; // by their names
};

XrandrDisplays::XrandrDisplays(const QString &display)
    : m_server(display.isEmpty() ? qEnvironmentVariable("DISPLAY") : display),
      m_shared(std::make_shared<Shared>())
{
    if (m_server.isEmpty()) {
        setAbsent(QStringLiteral("DISPLAY names no X server"));
        return;
    }
    m_grace.setSingleShot(true);
    m_grace.setInterval(graceTime());
    connect(&m_grace, &QTimer::timeout, this,
        [this] { setAbsent(QLatin1String("the X server ") + m_server + QLatin1String(" does not answer")); });
    m_shared->source = this;
    Workers::run([shared = m_shared, server = m_server] { Reader(shared, server).run(); });
}

XrandrDisplays::~XrandrDisplays()
{
    const std::lock_guard locker(m_shared->mutex);
    m_shared->source = nullptr;
    const quint64 once = 1;
    (void)!::write(m_shared->stop, &once, sizeof once);
}

void XrandrDisplays::onWaiting(bool waits)
{
    if (!waits)
        m_grace.stop();
    else if (!m_grace.isActive())
        m_grace.start();
}

} // namespace oz::services
