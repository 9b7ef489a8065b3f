#include "display/XrandrDisplays.hpp"

#include "core/Error.hpp"
#include "core/Log.hpp"

#include <oz/Screen.hpp>

#include <QByteArrayList>
#include <QPointer>

#include <cstdlib>
#include <cstring>

namespace oz::services {

namespace {

using DisplayTree::Display;

constexpr std::chrono::seconds RetryInterval(2);

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

QString serverName()
{
    return qEnvironmentVariable("DISPLAY");
}

} // namespace

XrandrDisplays::XrandrDisplays()
{
    if (const QString problem = tryConnect(); !problem.isEmpty())
        throw SourceUnavailable(problem);
    m_retry.setInterval(RetryInterval);
    connect(&m_retry, &QTimer::timeout, this, [this] {
        if (tryConnect().isEmpty()) {
            m_retry.stop();
            qCInfo(logServices).noquote() << "display: the X server" << serverName() << "is there again";
        }
    });
}

XrandrDisplays::~XrandrDisplays() = default;

QString XrandrDisplays::tryConnect()
{
    if (serverName().isEmpty())
        return QStringLiteral("DISPLAY names no X server");
    int number = 0;
    m_connection.reset(xcb_connect(nullptr, &number));
    xcb_connection_t *connection = m_connection.get();
    if (xcb_connection_has_error(connection))
        return QLatin1String("no X server is reachable at DISPLAY=") + serverName();
    const xcb_query_extension_reply_t *randr = xcb_get_extension_data(connection, &xcb_randr_id);
    const auto version = randr && randr->present
        ? replyOf(connection, xcb_randr_query_version(connection, 1, 2), xcb_randr_query_version_reply)
        : nullptr;
    if (!version || (version->major_version == 1 && version->minor_version < 2))
        return QLatin1String("the X server ") + serverName() + QLatin1String(" is without RandR 1.2");
    xcb_screen_iterator_t screen = xcb_setup_roots_iterator(xcb_get_setup(connection));
    for (; number > 0 && screen.rem > 1; --number)
        xcb_screen_next(&screen);
    m_root = screen.data->root;
    m_connectorType = atomNamed(connection, QByteArrayLiteral("ConnectorType"));
    xcb_randr_select_input(connection, m_root,
        XCB_RANDR_NOTIFY_MASK_SCREEN_CHANGE | XCB_RANDR_NOTIFY_MASK_CRTC_CHANGE
            | XCB_RANDR_NOTIFY_MASK_OUTPUT_CHANGE);
    m_notifier =
        std::make_unique<QSocketNotifier>(xcb_get_file_descriptor(connection), QSocketNotifier::Read);
    // Queued, so that the notifier may end in what it calls.
    connect(m_notifier.get(), &QSocketNotifier::activated, this, &XrandrDisplays::onReadable,
        Qt::QueuedConnection);
    // Has the server look at its outputs, which some do not do by themselves.
    (void)replyOf(
        connection, xcb_randr_get_screen_resources(connection, m_root), xcb_randr_get_screen_resources_reply);
    read();
    QMetaObject::invokeMethod(this, &XrandrDisplays::onReadable, Qt::QueuedConnection);
    return {};
}

void XrandrDisplays::onReadable()
{
    if (!m_connection)
        return;
    // Reading takes further events in, of which the descriptor tells nothing any more.
    while (takeEvents())
        read();
    if (xcb_connection_has_error(m_connection.get()))
        onLost();
}

// Whether any came.
bool XrandrDisplays::takeEvents()
{
    bool any = false;
    while (xcb_generic_event_t *event = xcb_poll_for_event(m_connection.get())) {
        std::free(event);
        any = true;
    }
    return any;
}

void XrandrDisplays::onLost()
{
    qCWarning(logServices).noquote() << "display: the X server" << serverName()
                                     << "is gone; its displays are detached until it is back";
    m_notifier.reset();
    m_connection.reset();
    DisplayTree::Displays detached = m_displays;
    for (auto &[id, display] : detached)
        display.attached = false;
    become(detached);
    m_retry.start();
}

void XrandrDisplays::read()
{
    xcb_connection_t *connection = m_connection.get();
    const auto resources = replyOf(connection, xcb_randr_get_screen_resources_current(connection, m_root),
        xcb_randr_get_screen_resources_current_reply);
    if (!resources)
        return;
    const xcb_timestamp_t time = resources->config_timestamp;
    QMap<xcb_randr_mode_t, QSize> modes;
    const xcb_randr_mode_info_t *mode = xcb_randr_get_screen_resources_current_modes(resources.get());
    for (int i = 0; i < xcb_randr_get_screen_resources_current_modes_length(resources.get()); ++i, ++mode)
        modes.insert(mode->id, QSize(mode->width, mode->height));

    DisplayTree::Displays displays;
    const xcb_randr_output_t *outputs = xcb_randr_get_screen_resources_current_outputs(resources.get());
    for (int i = 0; i < xcb_randr_get_screen_resources_current_outputs_length(resources.get()); ++i) {
        const auto output = replyOf(connection, xcb_randr_get_output_info(connection, outputs[i], time),
            xcb_randr_get_output_info_reply);
        if (!output)
            continue;
        const QByteArray name(reinterpret_cast<const char *>(xcb_randr_get_output_info_name(output.get())),
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
        display.kind = panel ? ScreenDisplayKind::Internal : ScreenDisplayKind::External;
        display.detachable = !panel;
        display.attached = hasMode && (connected || known.forced);
        display.physicalSize = QSize(int(output->mm_width), int(output->mm_height));
        if (hasMode) {
            display.size = modes.value(crtc->mode);
            display.rotation = degreesOf(crtc->rotation);
        } else if (xcb_randr_get_output_info_modes_length(output.get()) > 0) {
            display.size = modes.value(*xcb_randr_get_output_info_modes(output.get()));
        }
        displays[known.id] = display;
    }
    // Of a server that went away meanwhile this is only a part.
    if (!xcb_connection_has_error(connection))
        become(displays);
}

void XrandrDisplays::become(const DisplayTree::Displays &displays)
{
    if (displays == m_displays)
        return;
    m_displays = displays;
    Q_EMIT changed();
}

bool XrandrDisplays::isPanel(xcb_randr_output_t output, const QByteArray &name)
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
    const QByteArrayList panels{"eDP", "LVDS", "DSI"};
    return std::any_of(
        panels.begin(), panels.end(), [&](const QByteArray &panel) { return name.startsWith(panel); });
}

} // namespace oz::services
