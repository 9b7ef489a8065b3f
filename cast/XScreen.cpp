#include "XScreen.hpp"

#include "Elements.hpp"

#include <QByteArrayView>

#include <cstdlib>
#include <memory>
#include <xcb/randr.h>
#include <xcb/xcb.h>

namespace oz::cast {

namespace {

class XConnection final : public ScreenConnection
{
public:
    XConnection() : m_connection(xcb_connect(nullptr, &m_screen)) { }
    ~XConnection() override { xcb_disconnect(m_connection); }
    XConnection(const XConnection &) = delete;
    XConnection &operator=(const XConnection &) = delete;

    [[nodiscard]] int descriptor() const override { return xcb_get_file_descriptor(m_connection); }
    [[nodiscard]] bool isAlive() override
    {
        while (xcb_generic_event_t *event = xcb_poll_for_event(m_connection))
            std::free(event);
        return xcb_connection_has_error(m_connection) == 0;
    }
    [[nodiscard]] QSize size()
    {
        const xcb_screen_t *screen = this->screen();
        return screen ? QSize(screen->width_in_pixels, screen->height_in_pixels) : QSize();
    }
    // A server for X applications inside a Wayland compositor names its outputs so. It knows their windows
    // alone.
    [[nodiscard]] bool isXwayland()
    {
        const xcb_query_extension_reply_t *randr = xcb_get_extension_data(m_connection, &xcb_randr_id);
        const xcb_screen_t *screen = this->screen();
        if (!screen || !randr || !randr->present)
            return false;
        const Reply resources(xcb_randr_get_screen_resources_current_reply(
            m_connection, xcb_randr_get_screen_resources_current(m_connection, screen->root), nullptr));
        if (!resources || xcb_randr_get_screen_resources_current_outputs_length(resources.get()) == 0)
            return false;
        const Reply output(xcb_randr_get_output_info_reply(m_connection,
            xcb_randr_get_output_info(m_connection,
                xcb_randr_get_screen_resources_current_outputs(resources.get())[0], XCB_CURRENT_TIME),
            nullptr));
        return output
            && QByteArrayView(xcb_randr_get_output_info_name(output.get()),
                xcb_randr_get_output_info_name_length(output.get()))
                   .startsWith("XWAYLAND");
    }

private:
    struct Free
    {
        void operator()(void *reply) const { std::free(reply); }
    };
    template <typename Type>
    struct Reply : std::unique_ptr<Type, Free>
    {
        explicit Reply(Type *reply) : std::unique_ptr<Type, Free>(reply) { }
    };

    [[nodiscard]] const xcb_screen_t *screen()
    {
        if (xcb_connection_has_error(m_connection))
            return nullptr;
        xcb_screen_iterator_t screens = xcb_setup_roots_iterator(xcb_get_setup(m_connection));
        for (int i = 0; i < m_screen && screens.rem > 0; ++i)
            xcb_screen_next(&screens);
        return screens.rem > 0 ? screens.data : nullptr;
    }

    int m_screen = 0; // before the connection, which sets it
    xcb_connection_t *m_connection;
};

} // namespace

bool findXScreen(Screen *screen)
{
    const QString name = qEnvironmentVariable("DISPLAY");
    if (name.isEmpty()) {
        screen->remark = QStringLiteral("DISPLAY names no X server");
        return false;
    }
    if (!isInstalled("ximagesrc")) {
        screen->remark = QStringLiteral("the X server cannot be taken without ximagesrc (Debian package "
                                        "gstreamer1.0-plugins-good)");
        return false;
    }
    auto connection = std::make_shared<XConnection>();
    if (!connection->isAlive() || connection->size().isEmpty()) {
        screen->remark = QLatin1String("no X server is reachable at DISPLAY=") + name;
        return false;
    }
    if (connection->isXwayland()) {
        screen->remark = QLatin1String("the X server at DISPLAY=") + name
            + QLatin1String(" is Xwayland, which has the windows of X applications alone");
        return false;
    }
    screen->capture = QStringLiteral("x11");
    // To follow what is damaged costs more than to take all of it.
    screen->source = QStringLiteral("ximagesrc use-damage=false show-pointer=true");
    screen->size = connection->size();
    screen->remark = QLatin1String("the X server at DISPLAY=") + name + QLatin1String(", which comes first");
    screen->connection = connection;
    return true;
}

} // namespace oz::cast
