#include "Screen.hpp"

#include "Elements.hpp"
#include "WlrScreen.hpp"
#include "XScreen.hpp"

namespace oz::cast {

QString Screen::description(int rate) const
{
    const QString caps = QStringLiteral(" ! video/x-raw,framerate=%1/1").arg(rate);
    if (capture == u"x11") // following what is damaged costs more than taking all of it
        return QLatin1String("ximagesrc use-damage=false show-pointer=true") + caps;
    if (capture == u"wlr-screencopy") // pictures that come too fast are dropped, the oldest first
        return QStringLiteral("appsrc name=screen is-live=true format=time do-timestamp=true max-buffers=1 "
                              "leaky-type=downstream");
    const QLatin1String time(isInstalled("timeoverlay")
            ? " ! timeoverlay halignment=center valignment=center font-desc=\"Sans 36\""
            : "");
    return QStringLiteral("videotestsrc is-live=true pattern=%1")
               .arg(QLatin1String(time.isEmpty() ? "ball" : "smpte"))
        + caps + QStringLiteral(",width=%1,height=%2").arg(size.width()).arg(size.height()) + time;
}

Screen findScreen(Picture picture)
{
    Screen screen;
    if (picture == Picture::TestCard) {
        screen.capture = QStringLiteral("picture");
        screen.size = QSize(1280, 720);
        screen.remark = QStringLiteral("the test card, as it was asked for");
        return screen;
    }
    if (findXScreen(&screen))
        return screen;
    const QString noX = screen.remark;
    const bool isFound = findWlrScreen(&screen);
    screen.remark =
        isFound ? screen.remark + QLatin1String("; ") + noX : noX + QLatin1String("; ") + screen.remark;
    return screen;
}

} // namespace oz::cast
