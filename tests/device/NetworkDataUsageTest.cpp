#include "harness/Testing.hpp"

#include <oz/InterfaceData.hpp>
#include <oz/device/NetworkDataUsage.hpp>

#include <QFile>
#include <QStandardPaths>

#include <cerrno>
#include <linux/if_packet.h>
#include <net/if.h>
#include <netinet/in.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace oz;
using namespace oz::device;
using namespace oz::harness;

namespace {

using NetworkDataUsageTest = DeviceTest;

constexpr int NotToBeHad = 99;

// Runs \a body in a process with a network of its own, where nobody else sends; false where this user may
// not.
bool inNetworkOfItsOwn(const std::function<void()> &body)
{
    std::fflush(nullptr);
    const pid_t child = ::fork();
    if (child == 0) {
        const QByteArray user = "0 " + QByteArray::number(::geteuid()) + " 1";
        if (::unshare(CLONE_NEWNET) < 0) {
            if (::unshare(CLONE_NEWUSER | CLONE_NEWNET) < 0)
                ::_exit(NotToBeHad);
            // Root keeps its rights there in the programs that it starts.
            QFile map("/proc/self/uid_map");
            EXPECT_TRUE(map.open(QIODevice::WriteOnly | QIODevice::Unbuffered) && map.write(user) > 0);
        }
        body();
        std::fflush(nullptr);
        ::_exit(::testing::Test::HasFailure());
    }
    int status = 0;
    EXPECT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status));
    if (WEXITSTATUS(status) == NotToBeHad)
        return false;
    EXPECT_EQ(WEXITSTATUS(status), 0) << "see the failures above";
    return true;
}

// "PACKETS BYTES PACKETS BYTES" received and sent.
QString countersOf(const NetworkDataUsage &usage)
{
    return QString("%1 %2 %3 %4")
        .arg(usage.packetsReceived())
        .arg(usage.bytesReceived())
        .arg(usage.packetsSent())
        .arg(usage.bytesSent());
}

void bringUp(const char *name)
{
    ifreq request{};
    qstrncpy(request.ifr_name, name, sizeof request.ifr_name);
    const int socket = ::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    ASSERT_EQ(::ioctl(socket, SIOCGIFFLAGS, &request), 0);
    request.ifr_flags |= IFF_UP;
    ASSERT_EQ(::ioctl(socket, SIOCSIFFLAGS, &request), 0);
    ::close(socket);
}

// Sends itself datagrams of 100 bytes, 128 with their headers.
void sendOverLoopback(int count)
{
    const int socket = ::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    auto *generic = reinterpret_cast<sockaddr *>(&address);
    ASSERT_EQ(::bind(socket, generic, size) | ::getsockname(socket, generic, &size), 0);
    for (int i = 0; i < count; ++i)
        ASSERT_EQ(::sendto(socket, QByteArray(100, 'x').constData(), 100, 0, generic, size), 100);
    ::close(socket);
}

TEST_F(NetworkDataUsageTest, CountsWhatTheKernelCountsAndSignalsWhatChanged)
{
    const bool done = inNetworkOfItsOwn([&] {
        NetworkDataUsage usage("lo");
        SignalLog heard(&usage);
        EXPECT_TRUE(usage.update());
        EXPECT_EQ(heard.take(), "");
        bringUp("lo");
        sendOverLoopback(3);
        EXPECT_TRUE(usage.update());
        EXPECT_EQ(heard.take(), "packetsReceived(3) bytesReceived(384) packetsSent(3) bytesSent(384)");
        EXPECT_TRUE(usage.update());
        EXPECT_EQ(heard.take(), "");
        sendOverLoopback(70'000);
        EXPECT_TRUE(usage.update());
        EXPECT_EQ(countersOf(usage), "70003 8960384 70003 8960384");
        heard.take();

        // Every signal sees the new state in whole; the name comes last.
        QStringList seen;
        QObject::connect(&usage, &NetworkDataUsage::packetsReceivedChanged,
            [&] { seen.append(usage.networkInterfaceName() + ' ' + countersOf(usage)); });
        usage.setNetworkInterfaceName("lo");
        EXPECT_EQ(heard.take(), "");
        usage.setNetworkInterfaceName("none");
        EXPECT_EQ(heard.take(),
            "packetsReceived(0) bytesReceived(0) packetsSent(0) bytesSent(0) networkInterfaceName(\"none\")");
        EXPECT_EQ(seen, QStringList{"none 0 0 0 0"});
        usage.setNetworkInterfaceName("lo");
        EXPECT_EQ(heard.take(), "networkInterfaceName(\"lo\")");
        EXPECT_TRUE(usage.update());
        auto *gone = new NetworkDataUsage("lo");
        QObject::connect(gone, &NetworkDataUsage::packetsReceivedChanged, [&] { delete gone; });
        EXPECT_TRUE(gone->update());
    });
    if (!done)
        GTEST_SKIP() << "counts of its own need a network of its own";
}

TEST_F(NetworkDataUsageTest, TellsSentFromReceivedAndTakesNamesAsBytes)
{
    const QString ip = QStandardPaths::findExecutable("ip", {"/sbin", "/usr/sbin", "/bin", "/usr/bin"});
    ASSERT_FALSE(ip.isEmpty()) << "'ip' is not installed; the Debian package 'iproute2' has it";
    const bool done = inNetworkOfItsOwn([&] {
        // Only this test sends.
        QFile ipv6("/proc/sys/net/ipv6/conf/default/disable_ipv6");
        if (ipv6.open(QIODevice::WriteOnly))
            ipv6.write("1");
        ipv6.close();
        const QByteArray cut = "fourteen-bytes\xc3"; // the first half of the letter that follows
        const QByteArray make = ip.toLocal8Bit() + " link add one type veth peer name '" + cut + "'";
        if (std::system(make.constData()) != 0)
            ::_exit(NotToBeHad);
        bringUp("one");
        bringUp(cut.constData());
        InterfaceData data{"one"};
        const int socket = ::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
        EXPECT_TRUE(waitUntil([&] {
            return interfaceRequest(socket, GetInterfaceData, &data) == 0
                && data.linkState == InterfaceData::LinkUp;
        })) << "the link comes up by and by";
        EXPECT_EQ(std::tuple(data.type, data.addressLength, data.mtu), std::tuple(6, 6, 1500u));
        ::close(socket);
        const int sender = ::socket(AF_PACKET, SOCK_RAW | SOCK_CLOEXEC, 0);
        sockaddr_ll address{};
        address.sll_family = AF_PACKET;
        address.sll_ifindex = int(::if_nametoindex("one"));
        const QByteArray frame = QByteArray(12, '\xff') + "\x88\xb5" + QByteArray(86, 'x');
        for (int i = 0; i < 7; ++i)
            ASSERT_EQ(::sendto(sender, frame.constData(), 100, 0, reinterpret_cast<sockaddr *>(&address),
                          sizeof address),
                100);
        ::close(sender);
        NetworkDataUsage one("one");
        NetworkDataUsage other(QString::fromUtf8("fourteen-bytes\xc3\xa9 and more"));
        EXPECT_TRUE(one.update());
        EXPECT_TRUE(other.update());
        EXPECT_EQ(countersOf(one), "0 0 7 700");
        EXPECT_EQ(countersOf(other), "7 700 0 0");
    });
    if (!done)
        GTEST_SKIP() << "a pair of interfaces needs a network of its own, and the kernel to have veth";
}

TEST_F(NetworkDataUsageTest, FailsWithAWarningAndKeepsWhatItHad)
{
    for (const char *name : {"", "no-such-one", "lo ", "a name of more than fifteen bytes"}) {
        NetworkDataUsage usage(name);
        EXPECT_FALSE(usage.update()) << name;
        EXPECT_EQ(log.take(), QStringList{"NetworkDataUsage - failed to read network stats"}) << name;
        EXPECT_EQ(countersOf(usage), "0 0 0 0");
    }
    NetworkDataUsage usage("lo");
    EXPECT_TRUE(usage.update());
    const QString before = countersOf(usage);
    rlimit limit{};
    ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &limit), 0);
    const rlimit none{0, limit.rlim_max};
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &none), 0);
    EXPECT_FALSE(usage.update());
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &limit), 0);
    EXPECT_EQ(log.take(), QStringList{"NetworkDataUsage - failed to create socket"});
    EXPECT_EQ(countersOf(usage), before);
}

TEST(InterfaceData, TheRequestFailsAsOneToASocketDoes)
{
    const int socket = ::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    InterfaceData loopback{"lo"};
    EXPECT_EQ(interfaceRequest(socket, 0xC0906980, &loopback), 0);
    EXPECT_EQ(std::tuple(loopback.type, loopback.addressLength, loopback.mtu), std::tuple(24, 6, 65536u));
    const InterfaceData endless{
        {'l', 'o', 'o', 'o', 'o', 'o', 'o', 'o', 'o', 'o', 'o', 'o', 'o', 'o', 'o', 'o'}};
    const std::tuple<int, unsigned long, InterfaceData, int> rows[] = {
        {-1, GetInterfaceData, {"lo"}, EBADF},
        {STDERR_FILENO, GetInterfaceData, {"lo"}, EBADF},
        {socket, SIOCGIFMTU, {"lo"}, ENOTTY},
        {socket, GetInterfaceData, {"none"}, ENXIO},
        {socket, GetInterfaceData, {""}, ENXIO},
        {socket, GetInterfaceData, endless, ENXIO},
    };
    for (const auto &[descriptor, request, record, error] : rows) {
        InterfaceData data = record;
        EXPECT_EQ(interfaceRequest(descriptor, request, &data), -1);
        EXPECT_EQ(errno, error);
        EXPECT_EQ(data.mtu, 0u);
    }
    EXPECT_EQ(interfaceRequest(socket, GetInterfaceData, nullptr), -1);
    EXPECT_EQ(errno, EFAULT);
    ::close(socket);
}

} // namespace
