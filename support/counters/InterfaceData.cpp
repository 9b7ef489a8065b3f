#include <oz/InterfaceData.hpp>

#include <libmnl/libmnl.h>
#include <linux/if.h>
#include <linux/if_arp.h>
#include <linux/if_link.h>
#include <linux/rtnetlink.h>
#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <memory>

namespace oz {

namespace {

struct Type
{
    unsigned short hardware; // the kernel's number
    quint8 type; // IANA's number
};

constexpr quint8 OtherType = 1;
constexpr Type Types[] = {
    {ARPHRD_ETHER, 6},
    {ARPHRD_PPP, 23},
    {ARPHRD_LOOPBACK, 24},
    {ARPHRD_SLIP, 28},
    {ARPHRD_IEEE80211, 71},
    {ARPHRD_TUNNEL, 131},
    {ARPHRD_TUNNEL6, 131},
    {ARPHRD_SIT, 131},
    {ARPHRD_IPGRE, 131},
    {ARPHRD_IP6GRE, 131},
};

quint8 typeOf(unsigned short hardware)
{
    const auto *found = std::find_if(std::begin(Types), std::end(Types),
        [hardware](const Type &candidate) { return candidate.hardware == hardware; });
    return found == std::end(Types) ? OtherType : found->type;
}

InterfaceData::LinkState linkStateOf(quint8 state)
{
    switch (state) {
    case IF_OPER_UP:
        return InterfaceData::LinkUp;
    case IF_OPER_DOWN:
    case IF_OPER_LOWERLAYERDOWN:
    case IF_OPER_NOTPRESENT:
        return InterfaceData::LinkDown;
    default: // that of a loopback interface among them
        return InterfaceData::LinkUnknown;
    }
}

void take(const rtnl_link_stats64 &stats, InterfaceData *data)
{
    data->packetsReceived = stats.rx_packets;
    data->receiveErrors = stats.rx_errors;
    data->packetsSent = stats.tx_packets;
    data->sendErrors = stats.tx_errors;
    data->collisions = stats.collisions;
    data->bytesReceived = stats.rx_bytes;
    data->bytesSent = stats.tx_bytes;
    data->multicastsReceived = stats.multicast;
    data->receiveDrops = stats.rx_dropped;
}

int takeAttribute(const nlattr *attribute, void *record)
{
    auto *data = static_cast<InterfaceData *>(record);
    const std::size_t size = mnl_attr_get_payload_len(attribute);
    switch (mnl_attr_get_type(attribute)) {
    case IFLA_ADDRESS:
        data->addressLength = quint8(size);
        break;
    case IFLA_MTU:
        data->mtu = mnl_attr_get_u32(attribute);
        break;
    case IFLA_OPERSTATE:
        data->linkState = linkStateOf(mnl_attr_get_u8(attribute));
        break;
    case IFLA_STATS64: {
        // Kernels differ in how many counters follow those that are taken.
        rtnl_link_stats64 stats{};
        std::memcpy(&stats, mnl_attr_get_payload(attribute), std::min(size, sizeof stats));
        take(stats, data);
        break;
    }
    default:
        break;
    }
    return MNL_CB_OK;
}

int takeLink(const nlmsghdr *message, void *record)
{
    const auto *link = static_cast<const ifinfomsg *>(mnl_nlmsg_get_payload(message));
    static_cast<InterfaceData *>(record)->type = typeOf(link->ifi_type);
    return mnl_attr_parse(message, sizeof *link, takeAttribute, record);
}

// Asks the kernel about the one interface; the errno, or 0.
int ask(const char *name, InterfaceData *data)
{
    const std::unique_ptr<mnl_socket, decltype(&mnl_socket_close)> socket(
        mnl_socket_open2(NETLINK_ROUTE, SOCK_CLOEXEC), mnl_socket_close);
    if (!socket || mnl_socket_bind(socket.get(), 0, MNL_SOCKET_AUTOPID) < 0)
        return errno;
    alignas(nlmsghdr) std::array<char, 32'768> buffer{};
    nlmsghdr *request = mnl_nlmsg_put_header(buffer.data());
    request->nlmsg_type = RTM_GETLINK;
    request->nlmsg_flags = NLM_F_REQUEST;
    request->nlmsg_seq = 1;
    mnl_nlmsg_put_extra_header(request, sizeof(ifinfomsg));
    mnl_attr_put_strz(request, IFLA_IFNAME, name);
    if (mnl_socket_sendto(socket.get(), request, request->nlmsg_len) < 0)
        return errno;
    ssize_t size = 0;
    do
        size = mnl_socket_recvfrom(socket.get(), buffer.data(), buffer.size());
    while (size < 0 && errno == EINTR);
    const unsigned port = mnl_socket_get_portid(socket.get());
    const bool answered =
        size >= 0 && mnl_cb_run(buffer.data(), std::size_t(size), 1, port, takeLink, data) >= 0;
    return answered ? 0 : errno;
}

int answer(int socket, unsigned long request, InterfaceData *record)
{
    struct stat status;
    if (::fstat(socket, &status) < 0 || !S_ISSOCK(status.st_mode))
        return EBADF;
    if (request != GetInterfaceData)
        return ENOTTY;
    if (!record)
        return EFAULT;
    InterfaceData data;
    std::memcpy(data.name, record->name, sizeof data.name);
    const std::size_t length = ::strnlen(data.name, sizeof data.name);
    if (length == 0 || length == sizeof data.name)
        return ENXIO;
    if (const int error = ask(data.name, &data))
        return error == ENODEV ? ENXIO : error;
    *record = data;
    return 0;
}

} // namespace

int interfaceRequest(int socket, unsigned long request, InterfaceData *record)
{
    const int error = answer(socket, request, record);
    if (error)
        errno = error;
    return error ? -1 : 0;
}

} // namespace oz
