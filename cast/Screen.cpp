#include "Screen.hpp"

#include "Elements.hpp"
#include "FurtherOutput.hpp"
#include "PortalScreen.hpp"
#include "WlrScreen.hpp"
#include "XScreen.hpp"

#include <QStringList>

namespace oz::cast {

namespace {

bool findTestCard(Screen *screen)
{
    screen->capture = QStringLiteral("picture");
    screen->source = QStringLiteral("videotestsrc is-live=true pattern=ball");
    screen->size = QSize(1280, 720);
    if (isInstalled("timeoverlay")) {
        screen->source =
            QStringLiteral("videotestsrc is-live=true pattern=smpte ! timeoverlay halignment=center "
                           "valignment=center font-desc=\"Sans 36\"");
    }
    screen->source += QStringLiteral(" ! capsfilter caps=video/x-raw,width=%1,height=%2")
                          .arg(QString::number(screen->size.width()), QString::number(screen->size.height()));
    screen->remark = QStringLiteral("the test card, as it was asked for");
    return true;
}

using Finder = bool (*)(Screen *screen);

// The ways to take it, the best first.
std::vector<Finder> findersOf(Picture picture)
{
    switch (picture) {
    case Picture::OfScreen:
        return {findXScreen, findWlrScreen, findPortalScreen};
    case Picture::OfFurtherOutput:
        return {findFurtherOutput};
    case Picture::TestCard:
        return {findTestCard};
    }
    return {};
}

} // namespace

QString Screen::description(int rate) const
{
    return source + QStringLiteral(" ! video/x-raw,framerate=%1/1").arg(rate);
}

// The end of a stream would not do, as the sound goes on.
void endPictures(GstElement *pipeline, const char *reason)
{
    GError *error = g_error_new_literal(GST_RESOURCE_ERROR, GST_RESOURCE_ERROR_CLOSE, reason);
    gst_element_post_message(pipeline, gst_message_new_error(GST_OBJECT(pipeline), error, nullptr));
    g_error_free(error);
}

Screen findScreen(Picture picture)
{
    QStringList reasons;
    for (const Finder find : findersOf(picture)) {
        Screen screen;
        const bool isFound = find(&screen);
        reasons.insert(isFound ? 0 : reasons.size(), screen.remark);
        screen.remark = reasons.join(QLatin1String("; "));
        if (isFound)
            return screen;
    }
    Screen none;
    none.remark = reasons.join(QLatin1String("; "));
    return none;
}

} // namespace oz::cast
