#include "VideoFormats.hpp"

#include <algorithm>
#include <tuple>

namespace oz::cast {

namespace {

constexpr quint32 ConstrainedBaseline = 0x01;

// The numbers between are interlaced.
constexpr VideoMode Modes[] = {
    {VideoMode::Cea, 0, 640, 480, 60},
    {VideoMode::Cea, 1, 720, 480, 60},
    {VideoMode::Cea, 3, 720, 576, 50},
    {VideoMode::Cea, 5, 1280, 720, 30},
    {VideoMode::Cea, 6, 1280, 720, 60},
    {VideoMode::Cea, 7, 1920, 1080, 30},
    {VideoMode::Cea, 8, 1920, 1080, 60},
    {VideoMode::Cea, 10, 1280, 720, 25},
    {VideoMode::Cea, 11, 1280, 720, 50},
    {VideoMode::Cea, 12, 1920, 1080, 25},
    {VideoMode::Cea, 13, 1920, 1080, 50},
    {VideoMode::Cea, 15, 1280, 720, 24},
    {VideoMode::Cea, 16, 1920, 1080, 24},
    {VideoMode::Vesa, 0, 800, 600, 30},
    {VideoMode::Vesa, 1, 800, 600, 60},
    {VideoMode::Vesa, 2, 1024, 768, 30},
    {VideoMode::Vesa, 3, 1024, 768, 60},
    {VideoMode::Vesa, 4, 1152, 864, 30},
    {VideoMode::Vesa, 5, 1152, 864, 60},
    {VideoMode::Vesa, 6, 1280, 768, 30},
    {VideoMode::Vesa, 7, 1280, 768, 60},
    {VideoMode::Vesa, 8, 1280, 800, 30},
    {VideoMode::Vesa, 9, 1280, 800, 60},
    {VideoMode::Vesa, 10, 1360, 768, 30},
    {VideoMode::Vesa, 11, 1360, 768, 60},
    {VideoMode::Vesa, 12, 1366, 768, 30},
    {VideoMode::Vesa, 13, 1366, 768, 60},
    {VideoMode::Vesa, 14, 1280, 1024, 30},
    {VideoMode::Vesa, 15, 1280, 1024, 60},
    {VideoMode::Vesa, 16, 1400, 1050, 30},
    {VideoMode::Vesa, 17, 1400, 1050, 60},
    {VideoMode::Vesa, 18, 1440, 900, 30},
    {VideoMode::Vesa, 19, 1440, 900, 60},
    {VideoMode::Vesa, 20, 1600, 900, 30},
    {VideoMode::Vesa, 21, 1600, 900, 60},
    {VideoMode::Vesa, 22, 1600, 1200, 30},
    {VideoMode::Vesa, 23, 1600, 1200, 60},
    {VideoMode::Vesa, 24, 1680, 1024, 30},
    {VideoMode::Vesa, 25, 1680, 1024, 60},
    {VideoMode::Vesa, 26, 1680, 1050, 30},
    {VideoMode::Vesa, 27, 1680, 1050, 60},
    {VideoMode::Vesa, 28, 1920, 1200, 30},
    {VideoMode::Vesa, 29, 1920, 1200, 60},
    {VideoMode::Handheld, 0, 800, 480, 30},
    {VideoMode::Handheld, 1, 800, 480, 60},
    {VideoMode::Handheld, 2, 854, 480, 30},
    {VideoMode::Handheld, 3, 854, 480, 60},
    {VideoMode::Handheld, 4, 864, 480, 30},
    {VideoMode::Handheld, 5, 864, 480, 60},
    {VideoMode::Handheld, 6, 640, 360, 30},
    {VideoMode::Handheld, 7, 640, 360, 60},
    {VideoMode::Handheld, 8, 960, 540, 30},
    {VideoMode::Handheld, 9, 960, 540, 60},
    {VideoMode::Handheld, 10, 848, 480, 30},
    {VideoMode::Handheld, 11, 848, 480, 60},
};

// What a decoder of a level of H.264 manages, in blocks of 16x16 pixels.
struct Level
{
    quint32 bit;
    const char *name;
    int frame;
    int second;
};
constexpr Level Levels[] = {{0x01, "3.1", 3600, 108'000}, {0x02, "3.2", 5120, 216'000},
    {0x04, "4", 8192, 245'760}, {0x08, "4.1", 8192, 245'760}, {0x10, "4.2", 8704, 522'240}};

// The lowest level that \a mode fits; null if none does.
const Level *levelOf(const VideoMode &mode)
{
    const int blocks = (mode.width + 15) / 16 * ((mode.height + 15) / 16);
    const auto *const level = std::find_if(std::begin(Levels), std::end(Levels),
        [&](const Level &known) { return blocks <= known.frame && blocks * mode.rate <= known.second; });
    return level == std::end(Levels) ? nullptr : level;
}

// The fields of a codec: 9 hexadecimal numbers, then the largest size or "none none".
std::optional<VideoCodec> parseCodec(const QList<QByteArray> &fields)
{
    constexpr qsizetype Numbers = 9;
    if (fields.size() < Numbers)
        return std::nullopt;
    quint32 numbers[Numbers] = {};
    for (qsizetype i = 0; i < Numbers; ++i) {
        bool ok = false;
        numbers[i] = fields[i].toUInt(&ok, 16);
        if (!ok)
            return std::nullopt;
    }
    return VideoCodec{numbers[0], numbers[1], {numbers[2], numbers[3], numbers[4]}};
}

// What makes one mode better than another of those that the screen fills: pixels, then the rate.
std::pair<int, int> merit(const VideoMode &mode)
{
    constexpr int Preferred[] = {24, 50, 25, 60, 30}; // better and better
    return {mode.width * mode.height,
        int(std::find(std::begin(Preferred), std::end(Preferred), mode.rate) - std::begin(Preferred))};
}

} // namespace

QByteArray VideoChoice::toParameter() const
{
    QByteArray modes;
    for (const auto list : {VideoMode::Cea, VideoMode::Vesa, VideoMode::Handheld}) {
        const quint32 bits = list == mode.list ? quint32(1) << mode.bit : 0;
        modes += QByteArray::number(bits, 16).rightJustified(8, '0') + ' ';
    }
    const auto byte = [](quint32 value) { return QByteArray::number(value, 16).rightJustified(2, '0'); };
    return byte(quint32(mode.bit) << 3 | mode.list) + " 00 " + byte(ConstrainedBaseline) + ' ' + byte(level)
        + ' ' + modes + "00 0000 0000 00 none none";
}

QByteArray VideoChoice::levelName() const
{
    const auto *const known = std::find_if(
        std::begin(Levels), std::end(Levels), [this](const Level &row) { return row.bit == level; });
    return known == std::end(Levels) ? QByteArray() : QByteArray(known->name);
}

int VideoChoice::bitrate() const
{
    // A fifth of a bit for a pixel shows text without blur; radios of displays manage 10 Mbit/s everywhere.
    return std::clamp(int(double(mode.width) * mode.height * mode.rate * 0.18 / 1000), 1500, 10'000);
}

QList<VideoCodec> parseVideoFormats(const QByteArray &parameter)
{
    QList<VideoCodec> codecs;
    bool isFirst = true;
    for (const QByteArray &part : parameter.split(',')) {
        QList<QByteArray> fields = part.simplified().split(' ');
        if (std::exchange(isFirst, false)) {
            if (fields.size() < 2)
                return {};
            fields.remove(0, 2); // the native mode, which often is not one, and whether it is preferred
        }
        const auto codec = parseCodec(fields);
        if (!codec)
            return {};
        codecs.append(*codec);
    }
    return codecs;
}

std::optional<VideoChoice> chooseVideo(const QList<VideoCodec> &codecs, QSize screen)
{
    if (screen.width() < screen.height())
        screen.transpose();
    std::optional<VideoChoice> best;
    std::optional<VideoChoice> smallest;
    for (const VideoCodec &codec : codecs) {
        if (!(codec.profile & ConstrainedBaseline))
            continue;
        for (const VideoMode &mode : Modes) {
            const Level *level = levelOf(mode);
            // A display tells its highest level, which has the lower ones in it.
            if (!(codec.modes[mode.list] >> mode.bit & 1) || !level || codec.level < level->bit)
                continue;
            const bool fits = mode.width <= screen.width() && mode.height <= screen.height();
            if (fits && (!best || merit(best->mode) < merit(mode)))
                best = VideoChoice{mode, level->bit};
            const auto smallness = [](const VideoMode &one) {
                return std::tuple(-merit(one).first, merit(one).second);
            };
            if (!smallest || smallness(smallest->mode) < smallness(mode))
                smallest = VideoChoice{mode, level->bit};
        }
    }
    return best ? best : smallest;
}

bool offersAac(const QByteArray &parameter)
{
    const QList<QByteArray> codecs = parameter.split(',');
    return std::any_of(codecs.begin(), codecs.end(), [](const QByteArray &codec) {
        const QList<QByteArray> fields = codec.simplified().split(' ');
        return fields.size() >= 2 && fields[0] == "AAC" && (fields[1].toUInt(nullptr, 16) & 1);
    });
}

} // namespace oz::cast
