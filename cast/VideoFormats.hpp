#pragma once

#include <QByteArray>
#include <QList>
#include <QSize>

#include <optional>

namespace oz::cast {

/*! A progressive picture format of one of the three lists that displays choose from. */
struct VideoMode
{
    enum List { Cea, Vesa, Handheld };

    List list;
    int bit; //!< its place in the list
    int width;
    int height;
    int rate; //!< frames a second

    [[nodiscard]] QSize size() const { return {width, height}; }
};

/*! A variant of H.264 that a display decodes, and the modes that it shows with it: a bit each. */
struct VideoCodec
{
    quint32 profile = 0;
    quint32 level = 0;
    quint32 modes[3] = {}; //!< by VideoMode::List
};

/*! What is sent. */
struct VideoChoice
{
    VideoMode mode;
    quint32 level; //!< the bit of the level of H.264 that the mode needs

    /*! The value of the parameter wfd_video_formats that tells the display. */
    [[nodiscard]] QByteArray toParameter() const;
    /*! The level as H.264 names it, such as "3.1". */
    [[nodiscard]] QByteArray levelName() const;
    /*! In kbit/s. */
    [[nodiscard]] int bitrate() const;
};

/*! The codecs of a display's parameter wfd_video_formats; none if it cannot be read, or is "none". */
[[nodiscard]] QList<VideoCodec> parseVideoFormats(const QByteArray &parameter);

/*!
 * The largest mode that a display with \a codecs shows and that is not larger than \a screen, or the smallest
 * one if all are larger. A portrait screen counts as if it were turned, as no display has portrait modes. Of
 * two modes of one size, that with 30 frames a second is taken before others. nullopt if nothing is in
 * common.
 */
[[nodiscard]] std::optional<VideoChoice> chooseVideo(const QList<VideoCodec> &codecs, QSize screen);

/*! True if a display's parameter wfd_audio_codecs has AAC, in stereo with 48 kHz. */
[[nodiscard]] bool offersAac(const QByteArray &parameter);

} // namespace oz::cast
