#include "XScreen.hpp"

#include "Elements.hpp"

#include <cstdlib>
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
        xcb_screen_iterator_t screens = xcb_setup_roots_iterator(xcb_get_setup(m_connection));
        for (int i = 0; i < m_screen && screens.rem > 0; ++i)
            xcb_screen_next(&screens);
        if (screens.rem == 0)
            return {};
        return {screens.data->width_in_pixels, screens.data->height_in_pixels};
    }

private:
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
    screen->capture = QStringLiteral("x11");
    screen->size = connection->size();
    screen->remark = QLatin1String("the X server at DISPLAY=") + name + QLatin1String(", which comes first");
    screen->connection = connection;
    return true;
}

} // namespace oz::cast
