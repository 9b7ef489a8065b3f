#pragma once

#include <oz/OzSupportGlobal.hpp>

/*
 * Events to the own process: what an event is, sending one, and having one sent when a descriptor has input.
 * The functions keep the platform's names and conventions. Any thread may call them.
 */

namespace oz {

/*! The kinds of event, as the first word of the record holds them. */
namespace EventKind {
/*! The first word of a record. */
enum Type : int {
    None = 0, //!< no delivery
    SignalWithCode = 3, //!< a signal to the process, with a value and a code
    Pulse = 4, //!< a code and a value to whoever receives on a connection
};
} // namespace EventKind

/*!
 * The action to take for an event: the platform's own record, whose first word is its kind,
 * not that of the C library. A zeroed record is an event of the kind None.
 */
struct sigevent
{
    int notify = EventKind::None; //!< an EventKind
    union {
        int signo = 0; //!< SignalWithCode: the signal's number
        int coid; //!< Pulse: the connection's id
    };
    /*! The value handed over: a number or a pointer, whose meaning is up to the receiver. */
    union {
        int sival_int;
        void *sival_ptr = nullptr;
    } value;
    short code = 0; //!< of a signal its si_code, of a pulse the receiver's
    short priority = 0; //!< of a pulse; pulses are received in the order of sending, whatever it is
};

/*! The action of ionotify() that looks for the conditions and arms only where none holds. */
inline constexpr int NotifyActionPollArm = 3;

/*! The condition that there is input, in the flags and the result of ionotify(). */
inline constexpr int NotifyConditionInput = 0x10000000;

/*!
 * Asks for \a event when the descriptor \a fd has input. Returns the conditions of \a flags that hold now, in
 * which case nothing is armed; 0 where it is armed: the event is then delivered once, and the descriptor has
 * to be armed again for the next one. Arming again before that replaces the event. Closing the descriptor
 * takes the request away.
 *
 * -1, with the reason in errno: EINVAL for another action, other flags or no event; EBADF; EMFILE, ENFILE or
 * EAGAIN where the platform's own thread cannot start, which the next call tries again; ENODEV where the
 * other side is gone and has left nothing to read. For a device (see DeviceFile.hpp) that is gone the request
 * stands all the same: the event comes once the device is back.
 */
OZ_SUPPORT_EXPORT int ionotify(int fd, int action, int flags, const sigevent *event);

/*!
 * Delivers \a event to the client with the receive id \a rcvid; 0 stands for the calling process. Returns 0
 * or an errno: ESRCH for every other id, and for a pulse, which is sent on a connection (MsgSendPulse_r());
 * EINVAL for no event, a kind that is none, or a signal that is none; EAGAIN where too many signals wait. The
 * signal's code arrives as given where the kernel lets it, else as SI_QUEUE.
 */
OZ_SUPPORT_EXPORT int MsgDeliverEvent_r(int rcvid, const sigevent *event);

/*!
 * Sends a pulse on the connection \a coid of this process, without waiting for its receiver. Returns 0 or an
 * errno: EBADF for no such connection.
 */
OZ_SUPPORT_EXPORT int MsgSendPulse_r(int coid, int priority, int code, int value);

} // namespace oz
