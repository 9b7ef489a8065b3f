#pragma once

#include <QSize>
#include <QString>

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
    QString
        capture; //!< "x11", "wlr-screencopy", "picture" for the test card, or empty where there is no screen
    QSize size;
    QString remark; //!< which and why, and why no other, for a person
    std::shared_ptr<ScreenConnection> connection; //!< null for the test card

    /*! Feeds the pipeline once it is built; empty where that needs nobody. */
    std::function<void(GstElement *pipeline, int rate)> feed = {};

    /*! The beginning of a pipeline that takes \a rate pictures a second. */
    [[nodiscard]] QString description(int rate) const;
};

enum class Picture { OfScreen, TestCard };

/*! The screen of this session. It waits for the screen's server, even if that never answers. */
[[nodiscard]] Screen findScreen(Picture picture);

} // namespace oz::cast
