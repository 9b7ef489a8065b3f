#pragma once

#include <oz/OzSupportGlobal.hpp>

#include <QtGlobal>

#include <cstddef>

namespace oz {

/*!
 * The record of the interface-data request: the name of a network interface, and what the network stack knows
 * about that interface. Its 144 bytes are laid out as the stack publishes them. A field that the kernel does
 * not tell is 0.
 */
struct InterfaceData
{
    /*! The values of linkState. */
    enum LinkState { LinkUnknown = 0, LinkDown = 1, LinkUp = 2 };

    char name[16] = {}; //!< the question: at most 15 bytes, ended by a NUL; every other field is the answer

    quint8 type = 0; //!< a number of IANA's ifType, such as 6 for Ethernet and 24 for loopback; 1 for others
    quint8 addressLength = 0; //!< bytes of a hardware address
    quint8 headerLength = 0; //!< bytes of a link header; not told by the kernel
    qint32 linkState = 0; //!< a LinkState
    quint64 mtu = 0; //!< bytes
    quint64 metric = 0; //!< not told by the kernel
    quint64 baudRate = 0; //!< bits per second; not told by the kernel
    quint64 packetsReceived = 0; //!< this and all other counters begin with the interface
    quint64 receiveErrors = 0; //!< packets received that were bad
    quint64 packetsSent = 0; //!< see packetsReceived
    quint64 sendErrors = 0; //!< packets that could not be sent
    quint64 collisions = 0; //!< while sending
    quint64 bytesReceived = 0; //!< in the packets received
    quint64 bytesSent = 0; //!< in the packets sent
    quint64 multicastsReceived = 0; //!< packets
    quint64 multicastsSent = 0; //!< packets; not told by the kernel
    quint64 receiveDrops = 0; //!< packets received and dropped for want of room, or of a receiver
    quint64 unknownProtocols = 0; //!< packets; the kernel counts them among receiveDrops
    qint32 changedSeconds = 0; //!< the time of the last change; not told by the kernel
    qint32 changedNanoseconds = 0; //!< and its fraction
};

static_assert(sizeof(InterfaceData) == 144);
static_assert(offsetof(InterfaceData, name) == 0 && offsetof(InterfaceData, type) == 16);
static_assert(offsetof(InterfaceData, linkState) == 20 && offsetof(InterfaceData, mtu) == 24);
static_assert(offsetof(InterfaceData, metric) == 32 && offsetof(InterfaceData, baudRate) == 40);
static_assert(offsetof(InterfaceData, packetsReceived) == 48 && offsetof(InterfaceData, receiveErrors) == 56);
static_assert(offsetof(InterfaceData, packetsSent) == 64 && offsetof(InterfaceData, sendErrors) == 72);
static_assert(offsetof(InterfaceData, collisions) == 80 && offsetof(InterfaceData, bytesReceived) == 88);
static_assert(offsetof(InterfaceData, bytesSent) == 96 && offsetof(InterfaceData, multicastsReceived) == 104);
static_assert(offsetof(InterfaceData, changedSeconds) == 136);

/*! The request code: reads and writes a record of 144 bytes, group 'i', number 128. */
inline constexpr unsigned long GetInterfaceData = 0xC0906980;
static_assert(GetInterfaceData == (0xC0000000UL | sizeof(InterfaceData) << 16 | 'i' << 8 | 128));

/*!
 * Answers a request of an open socket about a network interface, as ioctl() would: fills \a record for the
 * interface that it names, from the kernel's 64-bit counters. 0, or -1 with the reason in errno and the
 * record as it was: EBADF where \a socket is no open socket, ENOTTY for any request but GetInterfaceData,
 * EFAULT where there is no record, ENXIO where no interface has that name; otherwise what the exchange with
 * the kernel gives, such as EMFILE. Any thread may call it.
 */
OZ_SUPPORT_EXPORT int interfaceRequest(int socket, unsigned long request, InterfaceData *record);

} // namespace oz
