#include "Elements.hpp"

#include <QStringList>

#include <gst/gst.h>

#include <algorithm>
#include <memory>

namespace oz::cast {

namespace {

// From the best to the worst. Displays take no B frames, and want key frames often enough to begin with.
constexpr VideoEncoder VideoEncoders[] = {
    {"v4l2h264enc", "NV12",
        "extra-controls=controls,video_bitrate=%BITS%,video_gop_size=%FRAMES%,h264_i_frame_period=%FRAMES%,"
        "video_b_frames=0,repeat_sequence_header=1",
        ",level=(string)%LEVEL%"},
    {"vah264enc", "NV12",
        "rate-control=cbr bitrate=%KBITS% key-int-max=%FRAMES% b-frames=0 ref-frames=1 cabac=false "
        "dct8x8=false"},
    {"vaapih264enc", "NV12",
        "rate-control=cbr bitrate=%KBITS% keyframe-period=%FRAMES% max-bframes=0 cabac=false dct8x8=false"},
    {"x264enc", "I420",
        "tune=zerolatency speed-preset=ultrafast bframes=0 cabac=false threads=1 sliced-threads=false "
        "key-int-max=%FRAMES% bitrate=%KBITS% vbv-buf-capacity=200"},
    {"openh264enc", "I420",
        "rate-control=bitrate complexity=low gop-size=%FRAMES% bitrate=%BITS% multi-thread=1"},
};

constexpr AudioEncoder AudioEncoders[] = {
    {"voaacenc", "bitrate=128000"},
    {"avenc_aac", "bitrate=128000"},
};

struct Needed
{
    const char *element;
    const char *package;
};
constexpr Needed NeededElements[] = {{"videoconvert", "gstreamer1.0-plugins-base"},
    {"videoscale", "gstreamer1.0-plugins-base"}, {"h264parse", "gstreamer1.0-plugins-bad"},
    {"mpegtsmux", "gstreamer1.0-plugins-bad"}, {"rtpmp2tpay", "gstreamer1.0-plugins-good"},
    {"udpsink", "gstreamer1.0-plugins-good"}};

template <typename Row, std::size_t Count>
const Row *rowNamed(const Row (&rows)[Count], const QString &name)
{
    const auto *const row = std::find_if(std::begin(rows), std::end(rows),
        [&](const Row &known) { return name == QLatin1String(known.element); });
    return row == std::end(rows) ? nullptr : row;
}

template <typename Row, std::size_t Count>
const Row *bestOf(const Row (&rows)[Count])
{
    const auto *const row = std::find_if(std::begin(rows), std::end(rows), [](const Row &known) {
        return isInstalled(known.element) && canBeOpened(QLatin1String(known.element));
    });
    return row == std::end(rows) ? nullptr : row;
}

} // namespace

QString VideoEncoder::description(const VideoChoice &choice) const
{
    QString text = QLatin1String(element) + QLatin1String(" name=encoder ") + QLatin1String(settings)
        + QLatin1String(" ! video/x-h264,profile=constrained-baseline,stream-format=byte-stream")
        + QLatin1String(output);
    text.replace(QLatin1String("%BITS%"), QString::number(choice.bitrate() * 1000));
    text.replace(QLatin1String("%KBITS%"), QString::number(choice.bitrate()));
    text.replace(QLatin1String("%FRAMES%"), QString::number(choice.mode.rate * 2));
    text.replace(QLatin1String("%LEVEL%"), QString::fromLatin1(choice.levelName()));
    return text;
}

Elements Elements::find()
{
    QStringList missing;
    for (const Needed &needed : NeededElements) {
        if (!isInstalled(needed.element)) {
            missing.append(QLatin1String(needed.element) + QLatin1String(" (Debian package ")
                + QLatin1String(needed.package) + u')');
        }
    }
    Elements found{bestOf(VideoEncoders), bestOf(AudioEncoders), {}};
    if (!found.video) {
        missing.append(
            QStringLiteral("an H.264 encoder that works (x264enc of the Debian package "
                           "gstreamer1.0-plugins-ugly, or openh264enc of gstreamer1.0-plugins-bad)"));
    }
    found.missing = missing.join(QLatin1String(", "));
    return found;
}

Elements Elements::named(const QString &video, const QString &audio)
{
    return {rowNamed(VideoEncoders, video), rowNamed(AudioEncoders, audio), {}};
}

QString Elements::videoName() const
{
    return video ? QString::fromLatin1(video->element) : QString();
}

QString Elements::audioName() const
{
    return audio ? QString::fromLatin1(audio->element) : QString();
}

bool isInstalled(const char *element)
{
    GstElementFactory *factory = gst_element_factory_find(element);
    if (!factory)
        return false;
    gst_object_unref(factory);
    return true;
}

bool canBeOpened(const QString &description)
{
    GError *error = nullptr;
    GstElement *element = gst_parse_launch(description.toUtf8().constData(), &error);
    g_clear_error(&error);
    if (!element)
        return false;
    gst_object_ref_sink(element);
    const bool opens = gst_element_set_state(element, GST_STATE_READY) != GST_STATE_CHANGE_FAILURE;
    gst_element_set_state(element, GST_STATE_NULL);
    gst_object_unref(element);
    return opens;
}

} // namespace oz::cast
