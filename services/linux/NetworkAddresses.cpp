#include "linux/NetworkAddresses.hpp"

#include <arpa/inet.h>
#include <libmnl/libmnl.h>
#include <linux/if_addr.h>
#include <linux/neighbour.h>
#include <linux/rtnetlink.h>
#include <net/if.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <functional>
#include <map>

namespace oz::services {

namespace {

using namespace std::chrono_literals;

constexpr auto BurstTime = 20ms;

using Socket = std::unique_ptr<mnl_socket, int (*)(mnl_socket *)>;
using Attributes = std::map<int, const nlattr *>;

Socket openSocket(unsigned groups)
{
    Socket socket(mnl_socket_open2(NETLINK_ROUTE, SOCK_CLOEXEC | SOCK_NONBLOCK), mnl_socket_close);
    if (socket && mnl_socket_bind(socket.get(), groups, MNL_SOCKET_AUTOPID) < 0)
        socket.reset();
    return socket;
}

Attributes attributesOf(const nlmsghdr *message, std::size_t headerSize)
{
    Attributes attributes;
    const auto take = [](const nlattr *attribute, void *all) {
        static_cast<Attributes *>(all)->emplace(mnl_attr_get_type(attribute), attribute);
        return MNL_CB_OK;
    };
    (void)mnl_attr_parse(message, unsigned(headerSize), take, &attributes);
    return attributes;
}

QByteArray bytesOf(const nlattr *attribute)
{
    return {static_cast<const char *>(mnl_attr_get_payload(attribute)), mnl_attr_get_payload_len(attribute)};
}

QString addressIn(const Attributes &attributes, int type)
{
    const auto found = attributes.find(type);
    return found == attributes.end() ? QString() : ipv4Text(bytesOf(found->second));
}

// The first address that \a find finds among the kernel's answers to a request for \a type. The kernel
// answers at once.
template <typename Header>
QString firstOf(int type, const std::function<QString(const Header &header, const Attributes &)> &find)
{
    const Socket socket = openSocket(0);
    if (!socket)
        return {};
    alignas(nlmsghdr) std::array<char, 32'768> buffer{};
    nlmsghdr *request = mnl_nlmsg_put_header(buffer.data());
    request->nlmsg_type = quint16(type);
    request->nlmsg_flags = NLM_F_REQUEST | NLM_F_DUMP;
    // Every header begins with the family.
    *static_cast<unsigned char *>(mnl_nlmsg_put_extra_header(request, sizeof(Header))) = AF_INET;
    if (mnl_socket_sendto(socket.get(), request, request->nlmsg_len) < 0)
        return {};
    struct Search
    {
        const std::function<QString(const Header &, const Attributes &)> &find;
        QString found;
    } search{find, {}};
    const auto take = [](const nlmsghdr *message, void *data) {
        auto *into = static_cast<Search *>(data);
        const auto *header = static_cast<const Header *>(mnl_nlmsg_get_payload(message));
        if (into->found.isEmpty())
            into->found = into->find(*header, attributesOf(message, sizeof(Header)));
        return MNL_CB_OK;
    };
    for (int result = MNL_CB_OK; result == MNL_CB_OK;) {
        const ssize_t size = mnl_socket_recvfrom(socket.get(), buffer.data(), buffer.size());
        if (size < 0 && errno == EINTR)
            continue;
        result = size < 0 ? MNL_CB_ERROR : mnl_cb_run(buffer.data(), std::size_t(size), 0, 0, take, &search);
    }
    return search.found;
}

int indexOf(const QString &interface)
{
    return int(::if_nametoindex(interface.toLatin1().constData()));
}

} // namespace

QString ipv4Text(const QByteArray &bytes)
{
    if (bytes.size() != sizeof(in_addr))
        return {};
    std::array<char, INET_ADDRSTRLEN> text{};
    ::inet_ntop(AF_INET, bytes.constData(), text.data(), text.size());
    return QString::fromLatin1(text.data());
}

bool isIpv4(const QString &text)
{
    in_addr address{};
    return ::inet_pton(AF_INET, text.toUtf8().constData(), &address) == 1;
}

NetworkAddresses::NetworkAddresses()
    : m_socket(openSocket(RTMGRP_IPV4_IFADDR | RTMGRP_IPV4_ROUTE | RTMGRP_NEIGH))
{
    m_soon.setSingleShot(true);
    m_soon.setInterval(BurstTime);
    m_soon.callOnTimeout(this, &NetworkAddresses::changed);
    if (!m_socket)
        return;
    m_readable = std::make_unique<QSocketNotifier>(mnl_socket_get_fd(m_socket.get()), QSocketNotifier::Read);
    connect(m_readable.get(), &QSocketNotifier::activated, this, &NetworkAddresses::onReadable);
}

NetworkAddresses::~NetworkAddresses()
{
    m_readable.reset();
}

void NetworkAddresses::onReadable()
{
    // What has changed is read anew, so that messages which the kernel had to drop (ENOBUFS) do not matter.
    std::array<char, 32'768> buffer{};
    while (mnl_socket_recvfrom(m_socket.get(), buffer.data(), buffer.size()) >= 0 || errno == ENOBUFS
        || errno == EINTR) { }
    if (!m_soon.isActive())
        m_soon.start();
}

QString NetworkAddresses::own(const QString &interface)
{
    return firstOf<ifaddrmsg>(
        RTM_GETADDR, [index = indexOf(interface)](const ifaddrmsg &header, const Attributes &attributes) {
            return int(header.ifa_index) == index ? addressIn(attributes, IFA_LOCAL) : QString();
        });
}

QString NetworkAddresses::gateway(const QString &interface)
{
    return firstOf<rtmsg>(
        RTM_GETROUTE, [index = indexOf(interface)](const rtmsg &header, const Attributes &attributes) {
            const auto device = attributes.find(RTA_OIF);
            const bool isOver = device != attributes.end() && int(mnl_attr_get_u32(device->second)) == index;
            return isOver && header.rtm_dst_len == 0 ? addressIn(attributes, RTA_GATEWAY) : QString();
        });
}

QString NetworkAddresses::neighbour(const QString &interface, const QString &hardware)
{
    return firstOf<ndmsg>(RTM_GETNEIGH,
        [index = indexOf(interface), hardware](const ndmsg &header, const Attributes &attributes) {
            const auto address = attributes.find(NDA_LLADDR);
            // Also one that was not heard of lately (stale).
            const bool isMeant = header.ndm_ifindex == index && !(header.ndm_state & NUD_FAILED)
                && address != attributes.end()
                && bytesOf(address->second) == QByteArray::fromHex(hardware.toLatin1());
            return isMeant ? addressIn(attributes, NDA_DST) : QString();
        });
}

QString NetworkAddresses::hardwareOf(const QString &address)
{
    return firstOf<ndmsg>(RTM_GETNEIGH, [address](const ndmsg &header, const Attributes &attributes) {
        constexpr int hardwareSize = 6;
        const auto hardware = attributes.find(NDA_LLADDR);
        if (header.ndm_state & (NUD_FAILED | NUD_INCOMPLETE | NUD_NOARP) || hardware == attributes.end()
            || addressIn(attributes, NDA_DST) != address)
            return QString();
        const QByteArray bytes = bytesOf(hardware->second);
        return bytes.size() == hardwareSize ? QString::fromLatin1(bytes.toHex(':')) : QString();
    });
}

} // namespace oz::services
