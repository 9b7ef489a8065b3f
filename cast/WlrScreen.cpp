#include "WlrScreen.hpp"

#include "Elements.hpp"

#include <algorithm>
#include <chrono>
#include <cstring>
#include <gst/app/gstappsrc.h>
#include <memory>
#include <sys/mman.h>
#include <thread>
#include <unistd.h>
#include <vector>
#include <wayland-client.h>
#include <wlr-screencopy-unstable-v1-client-protocol.h>

namespace oz::cast {

namespace {

// The layouts of pixels that compositors give, in Wayland's words and GStreamer's. Both name bytes, in
// opposite orders.
struct PixelLayout
{
    uint32_t wayland;
    const char *gstreamer;
};
constexpr PixelLayout PixelLayouts[] = {{WL_SHM_FORMAT_XRGB8888, "BGRx"}, {WL_SHM_FORMAT_ARGB8888, "BGRx"},
    {WL_SHM_FORMAT_XBGR8888, "RGBx"}, {WL_SHM_FORMAT_ABGR8888, "RGBx"}, {WL_SHM_FORMAT_BGR888, "RGB"},
    {WL_SHM_FORMAT_RGB888, "BGR"}};

// The memory of one picture, which the compositor writes.
class PictureMemory
{
public:
    PictureMemory(wl_shm *shm, uint32_t format, uint32_t width, uint32_t height, uint32_t stride)
        : m_size(std::size_t(stride) * height)
    {
        const int file = ::memfd_create("ozcast", MFD_CLOEXEC);
        if (file < 0 || ::ftruncate(file, off_t(m_size)) < 0) {
            ::close(file);
            return;
        }
        m_bytes = ::mmap(nullptr, m_size, PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
        wl_shm_pool *pool = wl_shm_create_pool(shm, file, int32_t(m_size));
        m_buffer =
            wl_shm_pool_create_buffer(pool, 0, int32_t(width), int32_t(height), int32_t(stride), format);
        wl_shm_pool_destroy(pool);
        ::close(file);
    }
    ~PictureMemory()
    {
        if (m_buffer)
            wl_buffer_destroy(m_buffer);
        if (isUsable())
            ::munmap(m_bytes, m_size);
    }
    PictureMemory(const PictureMemory &) = delete;
    PictureMemory &operator=(const PictureMemory &) = delete;

    [[nodiscard]] bool isUsable() const { return m_bytes != MAP_FAILED; }
    [[nodiscard]] wl_buffer *buffer() const { return m_buffer; }
    [[nodiscard]] const char *bytes() const { return static_cast<const char *>(m_bytes); }

private:
    std::size_t m_size;
    void *m_bytes = MAP_FAILED;
    wl_buffer *m_buffer = nullptr;
};

// A connection to the compositor, with what a picture is taken by. One thread uses it.
class WlrConnection final : public ScreenConnection
{
public:
    // To the output of that name, or to the first one if it is empty.
    explicit WlrConnection(const QString &output) : m_display(wl_display_connect(nullptr))
    {
        if (!m_display)
            return;
        static const wl_registry_listener listener{
            [](void *self, wl_registry *registry, uint32_t number, const char *interface, uint32_t version) {
                static_cast<WlrConnection *>(self)->onGlobal(registry, number, interface, version);
            },
            [](void *, wl_registry *, uint32_t) {}};
        wl_registry_add_listener(wl_display_get_registry(m_display), &listener, this);
        wl_display_roundtrip(m_display); // what there is
        wl_display_roundtrip(m_display); // the names and sizes of outputs
        const auto wanted = std::find_if(m_outputs.cbegin(), m_outputs.cend(),
            [&](const auto &each) { return output.isEmpty() || each->name == output; });
        if (wanted != m_outputs.cend())
            m_output = wanted->get();
    }
    // Takes the objects of the protocol along, but the memory destroys its own.
    ~WlrConnection() override
    {
        m_memory.reset();
        if (m_display)
            wl_display_disconnect(m_display);
    }
    WlrConnection(const WlrConnection &) = delete;
    WlrConnection &operator=(const WlrConnection &) = delete;

    [[nodiscard]] bool isConnected() const { return m_display; }
    [[nodiscard]] bool canCopy() const { return m_shm && m_manager && m_output && !m_output->size.isEmpty(); }
    [[nodiscard]] QSize size() const { return m_output->size; }

    [[nodiscard]] int descriptor() const override { return wl_display_get_fd(m_display); }
    [[nodiscard]] bool isAlive() override
    {
        if (wl_display_prepare_read(m_display) == 0 && wl_display_read_events(m_display) < 0)
            return false;
        return wl_display_dispatch_pending(m_display) >= 0;
    }

    // Takes one picture, and waits for it. Null if the compositor gives none.
    [[nodiscard]] GstBuffer *takePicture(GstCaps **caps)
    {
        static const zwlr_screencopy_frame_v1_listener listener{
            [](void *self, zwlr_screencopy_frame_v1 *frame, uint32_t format, uint32_t width, uint32_t height,
                uint32_t stride) {
                static_cast<WlrConnection *>(self)->onLayout(frame, {format, width, height, stride});
            },
            [](void *self, zwlr_screencopy_frame_v1 *, uint32_t flags) {
                static_cast<WlrConnection *>(self)->m_isInverted =
                    flags & ZWLR_SCREENCOPY_FRAME_V1_FLAGS_Y_INVERT;
            },
            [](void *self, zwlr_screencopy_frame_v1 *, uint32_t, uint32_t, uint32_t) {
                static_cast<WlrConnection *>(self)->m_result = Result::Ready;
            },
            [](void *self, zwlr_screencopy_frame_v1 *) {
                static_cast<WlrConnection *>(self)->m_result = Result::Failed;
            }};
        m_result = Result::None;
        zwlr_screencopy_frame_v1 *frame =
            zwlr_screencopy_manager_v1_capture_output(m_manager, 1, m_output->proxy);
        zwlr_screencopy_frame_v1_add_listener(frame, &listener, this);
        while (m_result == Result::None && wl_display_dispatch(m_display) >= 0) { }
        zwlr_screencopy_frame_v1_destroy(frame);
        return m_result == Result::Ready ? pictureOf(caps) : nullptr;
    }

private:
    struct Layout
    {
        uint32_t format = 0;
        uint32_t width = 0;
        uint32_t height = 0;
        uint32_t stride = 0;

        bool operator==(const Layout &) const = default;
    };
    struct Output
    {
        wl_output *proxy;
        QString name; // empty where the compositor tells none
        QSize size;
    };
    enum class Result { None, Ready, Failed };

    template <typename Interface>
    [[nodiscard]] static Interface *bind(
        wl_registry *registry, uint32_t number, const wl_interface &interface, uint32_t version = 1)
    {
        return static_cast<Interface *>(wl_registry_bind(registry, number, &interface, version));
    }

    void onGlobal(wl_registry *registry, uint32_t number, const char *interface, uint32_t version)
    {
        if (std::strcmp(interface, wl_shm_interface.name) == 0) {
            m_shm = bind<wl_shm>(registry, number, wl_shm_interface);
        } else if (std::strcmp(interface, zwlr_screencopy_manager_v1_interface.name) == 0) {
            m_manager =
                bind<zwlr_screencopy_manager_v1>(registry, number, zwlr_screencopy_manager_v1_interface);
        } else if (std::strcmp(interface, wl_output_interface.name) == 0) {
            wl_output *proxy = bind<wl_output>(registry, number, wl_output_interface,
                std::min<uint32_t>(version, WL_OUTPUT_NAME_SINCE_VERSION));
            Output *output = m_outputs.emplace_back(new Output{proxy, {}, {}}).get();
            static const wl_output_listener listener{
                [](void *, wl_output *, int32_t, int32_t, int32_t, int32_t, int32_t, const char *,
                    const char *, int32_t) {},
                [](void *self, wl_output *, uint32_t flags, int32_t width, int32_t height, int32_t) {
                    if (flags & WL_OUTPUT_MODE_CURRENT)
                        static_cast<Output *>(self)->size = QSize(width, height);
                },
                [](void *, wl_output *) {}, [](void *, wl_output *, int32_t) {},
                [](void *self, wl_output *, const char *name) {
                    static_cast<Output *>(self)->name = QString::fromUtf8(name);
                },
                [](void *, wl_output *, const char *) {}};
            wl_output_add_listener(proxy, &listener, output);
        }
    }

    // The compositor says what memory it writes a picture to.
    void onLayout(zwlr_screencopy_frame_v1 *frame, const Layout &layout)
    {
        if (!m_memory || layout != m_layout)
            m_memory = std::make_unique<PictureMemory>(
                m_shm, layout.format, layout.width, layout.height, layout.stride);
        m_layout = layout;
        if (m_memory->isUsable())
            zwlr_screencopy_frame_v1_copy(frame, m_memory->buffer());
        else
            m_result = Result::Failed;
    }

    [[nodiscard]] GstBuffer *pictureOf(GstCaps **caps) const
    {
        const auto *const known = std::find_if(std::begin(PixelLayouts), std::end(PixelLayouts),
            [this](const PixelLayout &row) { return row.wayland == m_layout.format; });
        if (known == std::end(PixelLayouts))
            return nullptr;
        *caps = gst_caps_new_simple("video/x-raw", "format", G_TYPE_STRING, known->gstreamer, "width",
            G_TYPE_INT, int(m_layout.width), "height", G_TYPE_INT, int(m_layout.height), nullptr);
        // GStreamer's lines begin at multiples of 4 bytes.
        const bool hasFour = std::strlen(known->gstreamer) == 4;
        const std::size_t used = std::size_t(m_layout.width) * (hasFour ? 4 : 3);
        const std::size_t line = (used + 3) / 4 * 4;
        GstBuffer *picture = gst_buffer_new_allocate(nullptr, line * m_layout.height, nullptr);
        for (std::size_t y = 0; y < m_layout.height; ++y) {
            const std::size_t from = m_isInverted ? m_layout.height - 1 - y : y;
            gst_buffer_fill(picture, line * y, m_memory->bytes() + from * m_layout.stride,
                std::min<std::size_t>(used, m_layout.stride));
        }
        return picture;
    }

    wl_display *m_display;
    wl_shm *m_shm = nullptr;
    zwlr_screencopy_manager_v1 *m_manager = nullptr;
    std::vector<std::unique_ptr<Output>> m_outputs;
    const Output *m_output = nullptr;
    std::unique_ptr<PictureMemory> m_memory;
    Layout m_layout;
    bool m_isInverted = false;
    Result m_result = Result::None;
};

// Takes pictures until the compositor gives no more. A paused pipeline takes none, and drops those that come.
void feed(GstElement *pipeline, int rate, const QString &output)
{
    auto *source = GST_APP_SRC(gst_bin_get_by_name(GST_BIN(pipeline), "screen"));
    std::thread([pipeline, source, rate, output] {
        WlrConnection connection(output);
        const auto pause = std::chrono::microseconds(1'000'000 / rate);
        auto next = std::chrono::steady_clock::now();
        while (connection.isConnected() && connection.canCopy()) {
            GstCaps *caps = nullptr;
            GstBuffer *picture = connection.takePicture(&caps);
            if (!picture)
                break;
            gst_caps_set_simple(caps, "framerate", GST_TYPE_FRACTION, rate, 1, nullptr);
            gst_app_src_set_caps(source, caps);
            gst_caps_unref(caps);
            gst_app_src_push_buffer(source, picture);
            next = std::max(next + pause, std::chrono::steady_clock::now());
            std::this_thread::sleep_until(next);
        }
        endPictures(pipeline, "the Wayland compositor gives no more pictures");
    }).detach();
}

} // namespace

bool findWlrScreen(Screen *screen)
{
    return findWlrOutput(screen, {});
}

bool findWlrOutput(Screen *screen, const QString &output)
{
    auto connection = std::make_shared<WlrConnection>(output);
    if (!connection->isConnected()) {
        screen->remark = QStringLiteral("no Wayland compositor is reachable");
        return false;
    }
    if (!connection->canCopy()) {
        screen->remark =
            QStringLiteral("the Wayland compositor has no output, or does not have wlr-screencopy");
        return false;
    }
    if (!isInstalled("appsrc")) {
        screen->remark =
            QStringLiteral("the Wayland compositor cannot be taken without appsrc (Debian package "
                           "gstreamer1.0-plugins-base)");
        return false;
    }
    screen->capture = QStringLiteral("wlr-screencopy");
    // Pictures that come too fast are dropped, the oldest first.
    screen->source = QStringLiteral(
        "appsrc name=screen is-live=true format=time do-timestamp=true max-buffers=1 leaky-type=downstream");
    screen->size = connection->size();
    screen->remark = output.isEmpty() ? QStringLiteral("the first output of the Wayland compositor")
                                      : QLatin1String("the output ") + output;
    screen->connection = connection;
    screen->feed = [output](
                       GstElement *pipeline, const VideoMode &mode) { feed(pipeline, mode.rate, output); };
    return true;
}

} // namespace oz::cast
