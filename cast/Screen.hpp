#pragma once

#include "VideoFormats.hpp"

#include <QSize>
#include <QString>

#include <chrono>
#include <functional>
#include <memory>

#include <gst/gst.h>

namespace oz::cast {

/*! A connection to a screen's server, by which its end is seen. */
class ScreenConnection
{
public:
    virtual ~ScreenConnection() = default;
    /*! Has input whenever isAlive() may have changed. */
    [[nodiscard]] virtual int descriptor() const = 0;
    /*! Reads what the server has sent, without waiting. */
    [[nodiscard]] virtual bool isAlive() = 0;
};

/*! A screen that can be cast, and how. */
struct Screen
{
    QString capture; //!< the name of the way that it is taken by; empty where there is no screen
    QString source; //!< the elements of a pipeline that give its pictures
    QSize size; //!< the largest that is asked for from it; once it is open, where it is to be opened
    QString remark; //!< which and why, and why no other, for a person
    std::shared_ptr<ScreenConnection> connection; //!< null where the end of the pictures tells its end

    /*!
     * Makes it ready for a cast, which may mean to ask the person in front of it. Empty where nothing is to
     * be done. False if it cannot be taken after all; then the remark says why.
     */
    std::function<bool(Screen *screen)> open = {};
    /*! How long open() may take at most. */
    std::chrono::milliseconds openLimit{6000};
    /*! What open() waits for, for a person. */
    QString awaited;

    /*! Feeds the pipeline once it is built; empty where that needs nobody. */
    std::function<void(GstElement *pipeline, const VideoMode &mode)> feed = {};

    /*! The beginning of a pipeline that takes \a rate pictures a second. */
    [[nodiscard]] QString description(int rate) const;
};

enum class Picture {
    OfScreen,
    OfFurtherOutput, //!< a part of the desktop that only the display shows
    TestCard,
};

/*! Has the cast of \a pipeline end because its pictures do; \a reason is for a person. From any thread. */
void endPictures(GstElement *pipeline, const char *reason);

/*! What can be cast in this session. It waits for the screen's server, even if that never answers. */
[[nodiscard]] Screen findScreen(Picture picture);

} // namespace oz::cast
