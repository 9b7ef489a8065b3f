#pragma once

#include <oz/EventDelivery.hpp>

#include <cstdint>

/*
 * The client side of the display service: lists the displays, reads their properties, queues what happens to
 * them, and delivers an event when something is queued. The displays live in the tree (see DisplayTree.hpp);
 * a context follows them on the platform's own thread.
 *
 * The functions keep the platform's names, numbers and conventions: 0, or -1 with the reason in errno (EINVAL
 * for a handle, property or argument that is none). Any thread may call them; a context is destroyed once no
 * other call uses it.
 */

namespace oz {

struct _screen_context;
struct _screen_display;
struct _screen_event;
using screen_context_t = _screen_context *;
using screen_display_t = _screen_display *;
using screen_event_t = _screen_event *;

/*! The properties, with the platform's published values. */
namespace ScreenProperty {
/*! The properties, each with its owners and its values. */
enum Type : int {
    EventDisplay = 11, //!< of an event, a pointer: the display it concerns
    IdString = 20, //!< of a display, text: its name
    Rotation = 38, //!< of a display: 0, 90, 180 or 270 degrees
    Size = 40, //!< of a display: width and height in pixels, in its native orientation
    Kind = 47, //!< of a display: its kind (ScreenDisplayKind); of an event: its ScreenEventType
    DisplayCount = 59, //!< of a context
    Displays = 60, //!< of a context, pointers: its displays, in the order of their identifiers
    Attached = 64, //!< of a display and of an event: 1 or 0
    Detachable = 65, //!< of a display: 1 or 0
    PhysicalSize = 69, //!< of a display: width and height in millimetres; 0 where not known
    Id = 87, //!< of a display: its identifier
    Technology = 129, //!< of a display: 0 unknown, 1 CRT, 2 LCD, 3 plasma, 4 LED, 5 OLED
};
} // namespace ScreenProperty

/*! The kinds of display that are told apart. */
namespace ScreenDisplayKind {
inline constexpr int Internal = 0x7660; //!< the device's own
inline constexpr int External = 0x7661; //!< every other
} // namespace ScreenDisplayKind

/*! The types of event. */
namespace ScreenEventType {
inline constexpr int None = 0; //!< no event
inline constexpr int Display = 11; //!< a display was attached or detached, or its size or rotation changed
} // namespace ScreenEventType

/*! The only flags of a context. */
inline constexpr int ScreenApplicationContext = 0;
/*! The only type of notification: of the events of a display. */
inline constexpr int ScreenNotifyDisplay = 3;

/*!
 * Makes a context; \a flags is ScreenApplicationContext. Fails with ENOENT where no display service has
 * published displays, EBADMSG where what it has published is malformed; EAGAIN, EMFILE or ENFILE where the
 * platform's own thread cannot start, which the next call tries again; EACCES.
 */
OZ_SUPPORT_EXPORT int screen_create_context(screen_context_t *context, int flags);
/*! Destroys a context, its display handles and its requests for notification. */
OZ_SUPPORT_EXPORT int screen_destroy_context(screen_context_t context);
/*! DisplayCount. */
OZ_SUPPORT_EXPORT int screen_get_context_property_iv(screen_context_t context, int property, int *value);
/*! Displays: as many as DisplayCount gave last on this context, nullptr for those that are gone since. */
OZ_SUPPORT_EXPORT int screen_get_context_property_pv(screen_context_t context, int property, void **value);

/*!
 * The integer properties of a display. The handles of a display that is removed stay valid for the life of
 * their context, and tell what it was last, detached.
 */
OZ_SUPPORT_EXPORT int screen_get_display_property_iv(screen_display_t display, int property, int *value);
/*! IdString, cut to \a size bytes with the terminating NUL, at a whole character of its UTF-8. */
OZ_SUPPORT_EXPORT int screen_get_display_property_cv(
    screen_display_t display, int property, int size, char *value);

/*!
 * Has \a event delivered when an event that concerns the display \a object is queued where none was: whoever
 * is told takes events until there is none, and is told once of what comes meanwhile. At once where one is
 * queued already. nullptr takes the request back. \a type is ScreenNotifyDisplay.
 */
OZ_SUPPORT_EXPORT int screen_notify(
    screen_context_t context, int type, const void *object, const sigevent *event);

OZ_SUPPORT_EXPORT int screen_create_event(screen_event_t *event);
OZ_SUPPORT_EXPORT int screen_destroy_event(screen_event_t event);
/*!
 * Takes the next event of the context's queue; one of the type None where nothing comes within \a timeout
 * nanoseconds (all bits set: waits for as long as it takes). A queue that nobody empties keeps the latest 256
 * events; several changes of one display's size in a row are one event.
 */
OZ_SUPPORT_EXPORT int screen_get_event(screen_context_t context, screen_event_t event, std::uint64_t timeout);
/*! Kind, and of a display event Attached. */
OZ_SUPPORT_EXPORT int screen_get_event_property_iv(screen_event_t event, int property, int *value);
/*! EventDisplay. */
OZ_SUPPORT_EXPORT int screen_get_event_property_pv(screen_event_t event, int property, void **value);

} // namespace oz
