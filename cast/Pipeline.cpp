#include "Pipeline.hpp"

#include <QFileInfo>

#include <gio/gio.h>

namespace oz::cast {

namespace {

const QString Monitor = QStringLiteral("pulsesrc device=@DEFAULT_MONITOR@");
const QString Silence = QStringLiteral("audiotestsrc wave=silence is-live=true");

// What plays on this machine. Without a sound server it is silence, as some displays wait for sound.
QString soundSource()
{
    // The server's library would start a server.
    const QString folder = qEnvironmentVariable("XDG_RUNTIME_DIR");
    const bool hasServer = qEnvironmentVariableIsSet("PULSE_SERVER")
        || (!folder.isEmpty() && QFileInfo::exists(folder + QLatin1String("/pulse/native")));
    return hasServer && isInstalled("pulsesrc") && canBeOpened(Monitor) ? Monitor : Silence;
}

GstElement *elementNamed(GstElement *pipeline, const char *name)
{
    return gst_bin_get_by_name(GST_BIN(pipeline), name);
}

} // namespace

Pipeline::Pipeline(const PipelinePlan &plan) : m_plan(plan), m_inThread(new QObject)
{
    m_limit.setSingleShot(true);
    m_limit.setInterval(m_plan.limit);
    m_limit.callOnTimeout(this, [this] { fail(QStringLiteral("the screen or the encoder does not go on")); });
    m_inThread->moveToThread(&m_thread);
    m_thread.start();
}

void Pipeline::play()
{
    m_limit.start();
    inThread([this] {
        if (!m_pipeline)
            build();
        m_awaitsPacket = true;
        setState(GST_STATE_PLAYING);
    });
    wantKeyFrame();
}

void Pipeline::pause()
{
    m_limit.start();
    inThread([this] {
        m_awaitsPacket = false;
        setState(GST_STATE_PAUSED);
        QMetaObject::invokeMethod(this, [this] {
            if (m_hasFailed)
                return;
            m_limit.stop();
            Q_EMIT paused();
        });
    });
}

void Pipeline::wantKeyFrame()
{
    inThread([this] {
        GstElement *encoder = m_pipeline ? elementNamed(m_pipeline, "encoder") : nullptr;
        if (!encoder)
            return;
        GstPad *pad = gst_element_get_static_pad(encoder, "src");
        gst_pad_send_event(pad,
            gst_event_new_custom(GST_EVENT_CUSTOM_UPSTREAM,
                gst_structure_new("GstForceKeyUnit", "all-headers", G_TYPE_BOOLEAN, TRUE, nullptr)));
        gst_object_unref(pad);
        gst_object_unref(encoder);
    });
}

QString Pipeline::description(const PipelinePlan &plan)
{
    const VideoMode &mode = plan.video.mode;
    QString text = plan.picture
        + QStringLiteral(
            " ! queue leaky=downstream max-size-buffers=1 ! videoscale add-borders=true "
            "! videoconvert ! video/x-raw,format=%1,width=%2,height=%3,pixel-aspect-ratio=1/1 ! ")
              .arg(QLatin1String(plan.elements.video->input))
              .arg(mode.width)
              .arg(mode.height)
        + plan.elements.video->description(plan.video)
        + QLatin1String(" ! h264parse config-interval=-1 ! queue ! mpegtsmux name=mux alignment=7 "
                        "! rtpmp2tpay pt=33 mtu=1400 ! udpsink name=network sync=false async=false host=")
        + plan.display.toString() + QLatin1String(" port=") + QString::number(plan.port);
    if (plan.hasAudio) {
        text += u' ' + soundSource()
            + QLatin1String(" ! audioconvert ! audioresample ! audio/x-raw,rate=48000,channels=2 ! queue ! ")
            + QLatin1String(plan.elements.audio->element) + u' '
            + QLatin1String(plan.elements.audio->settings)
            + QLatin1String(" ! aacparse ! audio/mpeg,mpegversion=4,stream-format=adts ! queue ! mux.");
    }
    return text;
}

void Pipeline::inThread(const std::function<void()> &act)
{
    QMetaObject::invokeMethod(m_inThread, act, Qt::QueuedConnection);
}

void Pipeline::build()
{
    GError *error = nullptr;
    m_pipeline = gst_parse_launch(description(m_plan).toUtf8().constData(), &error);
    if (error) {
        fail(QString::fromUtf8(error->message));
        g_clear_error(&error);
        return;
    }
    GstElement *network = elementNamed(m_pipeline, "network");
    if (GSocket *socket = g_socket_new_from_fd(m_plan.socket, nullptr)) {
        g_object_set(network, "socket", socket, "close-socket", FALSE, nullptr);
        g_object_unref(socket);
    }
    GstPad *pad = gst_element_get_static_pad(network, "sink");
    gst_pad_add_probe(pad, GstPadProbeType(GST_PAD_PROBE_TYPE_BUFFER | GST_PAD_PROBE_TYPE_BUFFER_LIST),
        &Pipeline::onPacket, this, nullptr);
    gst_object_unref(pad);
    gst_object_unref(network);
    GstBus *bus = gst_element_get_bus(m_pipeline);
    gst_bus_set_sync_handler(bus, &Pipeline::onMessage, this, nullptr);
    gst_object_unref(bus);
    if (m_plan.onBuilt)
        m_plan.onBuilt(m_pipeline);
}

void Pipeline::setState(GstState state)
{
    // The bus says why.
    if (m_pipeline && gst_element_set_state(m_pipeline, state) == GST_STATE_CHANGE_FAILURE)
        fail(QStringLiteral("picture or sound cannot be taken"));
}

// May be called from any thread.
void Pipeline::fail(const QString &reason)
{
    QMetaObject::invokeMethod(this, [this, reason] {
        if (std::exchange(m_hasFailed, true))
            return;
        m_limit.stop();
        Q_EMIT failed(reason);
    });
}

GstBusSyncReply Pipeline::onMessage(GstBus *, GstMessage *message, gpointer self)
{
    auto *pipeline = static_cast<Pipeline *>(self);
    if (GST_MESSAGE_TYPE(message) == GST_MESSAGE_ERROR) {
        GError *error = nullptr;
        gst_message_parse_error(message, &error, nullptr);
        const QString source = GST_IS_PIPELINE(message->src)
            ? QString()
            : QString::fromUtf8(GST_OBJECT_NAME(message->src)) + QLatin1String(": ");
        pipeline->fail(source + QString::fromUtf8(error->message));
        g_clear_error(&error);
    } else if (GST_MESSAGE_TYPE(message) == GST_MESSAGE_EOS) {
        pipeline->fail(QStringLiteral("the picture has ended"));
    }
    gst_message_unref(message);
    return GST_BUS_DROP;
}

GstPadProbeReturn Pipeline::onPacket(GstPad *, GstPadProbeInfo *, gpointer self)
{
    auto *pipeline = static_cast<Pipeline *>(self);
    if (pipeline->m_awaitsPacket && pipeline->m_awaitsPacket.exchange(false)) {
        QMetaObject::invokeMethod(pipeline, [pipeline] {
            if (pipeline->m_hasFailed)
                return;
            pipeline->m_limit.stop();
            Q_EMIT pipeline->sending();
        });
    }
    return GST_PAD_PROBE_OK;
}

} // namespace oz::cast
