#include "services/Services.hpp"

#include <oz/DeviceFile.hpp>
#include <oz/device/DeviceInfo.hpp>

#include <poll.h>

// The power manager and the orientation sensor of the simulated phone.

using namespace oz;
using namespace oz::device;
using namespace oz::harness;

namespace {

class DeviceStateTest : public ServicesTest
{
protected:
    DeviceStateTest()
        : ServicesTest(R"({"activity": {"idle-seconds": 300, "other-statuses": {"charger": "none"}},
                           "orientation": {"orientation": "face-up"}})")
    {
    }
};

class Client
{
public:
    Client() : m_fd(openDevice("/dev/power/mgr", DeviceOpen::ReadWrite)) { EXPECT_GE(m_fd, 0); }
    ~Client() { closeDevice(m_fd); }
    Client(const Client &) = delete;
    Client &operator=(const Client &) = delete;
    [[nodiscard]] bool tryWrite(const QByteArray &text) const
    {
        return writeDevice(m_fd, text.constData(), std::size_t(text.size())) == text.size();
    }
    void write(const QByteArray &text) const { EXPECT_TRUE(tryWrite(text)); }
    // The next message of the device.
    [[nodiscard]] QByteArray read() const
    {
        pollfd input{m_fd, POLLIN, 0};
        EXPECT_EQ(::poll(&input, 1, 20'000), 1);
        char text[256];
        const ssize_t size = readDevice(m_fd, text, sizeof text);
        return size < 0 ? "errno " + QByteArray::number(errno) : QByteArray(text, size);
    }

private:
    int m_fd;
};

TEST_F(DeviceStateTest, OrdersAndIdleTimeAreSignalled)
{
    DeviceInfo info;
    SignalLog heard(&info);
    EXPECT_EQ(info.activityState(), UserActivityState::Active);
    EXPECT_EQ(heard.waitFor(3), "orientation(FaceUp) orientation(0) orientationValid(true)");
    sim("clock advance 301");
    EXPECT_EQ(heard.waitFor(2), "activityState(Inactive) activityState(2)"); // after a while, by itself
    sim("activity active");
    EXPECT_EQ(heard.waitFor(2), "activityState(Active) activityState(1)");
    sim("activity standby");
    EXPECT_EQ(heard.waitFor(2), "activityState(Inactive) activityState(2)");
    for (const char *orientation : {"BottomUp", "LeftUp", "RightUp", "FaceDown", "TopUp"}) {
        sim("orientation " + QString(orientation).replace("U", "-u").replace("D", "-d").toLower());
        EXPECT_TRUE(heard.waitFor(2).startsWith(QString("orientation(%1) ").arg(orientation)));
    }
    sim("orientation undefined");
    EXPECT_EQ(heard.waitFor(1), "orientationValid(false)");
    EXPECT_EQ(log.take().size(), 1);
}

TEST_F(DeviceStateTest, AClientFollowsOneStatusWhateverElseItSays)
{
    Client talkative;
    Client silent;
    Client charger;
    silent.write("STATUS user_act"); // and no more
    charger.write("STATUS charger\n");
    EXPECT_EQ(charger.read(), "statusnone\n");
    talkative.write("rubbish\n");
    EXPECT_EQ(talkative.read(), "error: expected 'STATUS NAME'\n");
    talkative.write("STATUS no_such\n");
    EXPECT_EQ(talkative.read(), "error: no status has that name\n");
    sim("activity status charger usb");
    EXPECT_EQ(charger.read(), "statususb\n");
    talkative.write("STATUS charger\n");
    EXPECT_EQ(talkative.read(), "statususb\n");
    talkative.write(QByteArray(5000, 'x'));
    EXPECT_EQ(talkative.read(), "errno 19") << "a line without end ends the connection";
    // One that does not read gets the latest, once it does.
    const QByteArray line("STATUS charger\n");
    while (charger.tryWrite(line)) { }
    sim("activity status charger wireless");
    QByteArray text;
    while (!text.endsWith("statuswireless\n"))
        text += charger.read();
    EXPECT_FALSE(text.contains("statususbstatus") || text.contains("\n\n"));
    // All that waits is read at once, so that no line is cut.
    for (int i = 101; i <= 130; ++i)
        sim("activity status charger " + QString(117, 'x') + QString::number(i));
    text = charger.read();
    EXPECT_TRUE(text.size() <= 255 && text.endsWith('\n')) << text.toStdString();
    EXPECT_TRUE(charger.read().endsWith("x130\n"));
}

} // namespace
