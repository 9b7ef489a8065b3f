#pragma once

#include "VideoFormats.hpp"

#include <QString>

namespace oz::cast {

/*! An H.264 encoder that a picture can be sent with. */
struct VideoEncoder
{
    const char *element;
    const char *input; //!< the layout of pixels that it takes without a copy
    const char *settings; //!< with %BITS%, %KBITS% (bits a second) and %FRAMES% (between key frames)
    const char *output = ""; //!< what it has to be told of its output besides the profile, with %LEVEL%

    /*! Its part of a pipeline. */
    [[nodiscard]] QString description(const VideoChoice &choice) const;
};

/*! An AAC encoder. */
struct AudioEncoder
{
    const char *element;
    const char *settings;
};

/*! What a cast can be made with here. */
struct Elements
{
    const VideoEncoder *video = nullptr; //!< null where there is none
    const AudioEncoder *audio = nullptr; //!< null where there is none
    QString missing; //!< what is not installed, with its package, for a person; empty if a cast can be made

    /*! The best that is installed and can be opened, which takes some time. GStreamer has to be initialised.
     */
    [[nodiscard]] static Elements find();
    /*! Those of the names, without a look whether they are there. */
    [[nodiscard]] static Elements named(const QString &video, const QString &audio);

    [[nodiscard]] QString videoName() const;
    [[nodiscard]] QString audioName() const;
};

/*! True if \a element is installed. */
[[nodiscard]] bool isInstalled(const char *element);
/*! True if an element that \a description describes can be opened, with its device or server. */
[[nodiscard]] bool canBeOpened(const QString &description);

} // namespace oz::cast
