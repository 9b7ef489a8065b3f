#include "harness/Testing.hpp"

#include "sockets/ServiceLink.hpp"

#include <QFile>

#include <cerrno>
#include <deque>
#include <memory>

using namespace oz;
using namespace oz::harness;
using namespace std::chrono_literals;
using LocalSocket::Wait;
using State = ServiceLink::State;

namespace {

class ServiceLinkTest : public DeviceTest
{
protected:
    ~ServiceLinkTest() override { qunsetenv("OZ_GRACE_TIME"); }

    [[nodiscard]] UniqueFd listen() const
    {
        UniqueFd service;
        EXPECT_EQ(LocalSocket::listen(file, 0666, &service, SOCK_STREAM), 0);
        return service;
    }
    void establish()
    {
        ASSERT_EQ(link.connect(Wait::No, &socket), 0);
        link.establish();
    }

    const QByteArray file = QFile::encodeName(root.file("/dev/box"));
    ServiceLink link{file, SOCK_STREAM};
    UniqueFd socket;
};

TEST_F(ServiceLinkTest, ALinkIsLostAfterTheGraceTimeOrOnceItsServiceIsKnownToLive)
{
    enum Service { Lives, IsDead, IsRemoved };
    const std::tuple<Service, const char *> rows[] = {{Lives, "60"}, {IsDead, "0.2"}, {IsRemoved, "0.2"}};
    for (const auto &[after, grace] : rows) {
        qputenv("OZ_GRACE_TIME", grace);
        UniqueFd service = listen();
        establish();
        EXPECT_FALSE(link.giveUpIfLost());
        if (after != Lives)
            service.reset();
        if (after == IsRemoved)
            QFile::remove(QFile::decodeName(file));
        link.lose();
        const QDeadlineTimer first = link.nextJudgement();
        EXPECT_EQ(link.state(), State::Away);
        const bool isGone = link.giveUpIfLost();
        EXPECT_TRUE(!isGone || first.hasExpired()) << "before that it is not known whether it lives";
        ASSERT_TRUE(isGone || waitUntil([&] { return link.giveUpIfLost(); })) << after;
        EXPECT_TRUE(first.hasExpired());
        EXPECT_EQ(link.judgements()[1].hasExpired(), after != Lives);
        EXPECT_EQ(link.state(), State::Gone);
        EXPECT_FALSE(link.giveUpIfLost()) << "it is told once";
        QFile::remove(QFile::decodeName(file));
    }
}

TEST_F(ServiceLinkTest, OnlyAnotherServiceTakesThePlaceOfTheLast)
{
    UniqueFd next;
    EXPECT_EQ(link.connectToNext(&next), ENOENT);
    UniqueFd service = listen();
    establish();
    link.lose();
    EXPECT_EQ(link.connectToNext(&next), ENOENT) << "it lives and has ended the connection";
    service.reset();
    EXPECT_EQ(link.connectToNext(&next), ENOENT) << "it is dead";
    service = listen();
    ASSERT_EQ(link.connectToNext(&next), 0);
    EXPECT_EQ(link.state(), State::Away) << "until the connection is used";
    ASSERT_EQ(link.connectToNext(&next), 0);
    link.establish();
    EXPECT_EQ(link.state(), State::Up);
    EXPECT_EQ(link.connectToNext(&next), ENOENT);

    link.lose();
    link.giveUp();
    root.place("/dev/box", "no socket");
    EXPECT_EQ(link.connectToNext(&next), ENOENT);
    root.remove("/dev/box");
    service = listen();
    EXPECT_EQ(link.connectToNext(&next), 0) << "also long after the grace time";
}

TEST(ServiceRetryTest, PausesGrowAndAServiceThatNeverAcceptsIsAskedNoMore)
{
    ServiceRetry retry;
    for (const auto pause : {10ms, 20ms, 40ms, 80ms, 160ms, 320ms, 640ms})
        EXPECT_EQ(retry.pauseAfter(ECONNREFUSED), pause);
    EXPECT_EQ(retry.pauseAfter(ECONNREFUSED), std::nullopt);
    EXPECT_EQ(retry.pauseAfter(ENOENT), std::nullopt);
    EXPECT_EQ(retry.pauseAfter(EAGAIN), 1s) << "it lives, and will accept some time";
    EXPECT_EQ(retry.pauseAfter(EAGAIN), 1s);
    retry.reset();
    EXPECT_EQ(retry.pauseAfter(ECONNREFUSED), 10ms);
}

// Gives the errors of its attempts in turn, then success, with which the wait is over.
class Owner : public ServiceReturn::Owner
{
public:
    Owner(const ServiceLink &link, std::deque<int> errors)
        : m_errors(std::move(errors)), wait(std::make_unique<ServiceReturn>(link, this))
    {
    }
    int lookForService() override
    {
        ++looks;
        if (m_errors.empty()) {
            wait.reset();
            return 0;
        }
        const int error = m_errors.front();
        m_errors.pop_front();
        return error;
    }
    void judgeLoss() override { ++judgements; }

private:
    std::deque<int> m_errors;

public:
    std::unique_ptr<ServiceReturn> wait;
    int looks = 0;
    int judgements = 0;
};

TEST_F(ServiceLinkTest, AWaitLooksAtFirstAndAgainUntilAServiceAcceptsAndJudgesWhenTheTimesAreOver)
{
    qputenv("OZ_GRACE_TIME", "0.15");
    link.lose();
    Owner patient(link, {EAGAIN, ECONNREFUSED, EAGAIN});
    Owner idle(link, {ENOENT, ENOENT});
    EXPECT_EQ(patient.looks, 0) << "the first look is the event loop's";
    ASSERT_TRUE(waitUntil([&] { return !patient.wait; }));
    EXPECT_EQ(patient.looks, 4);
    ASSERT_TRUE(waitUntil([&] { return idle.judgements == 2; }));
    EXPECT_EQ(idle.looks, 1) << "nothing has changed at the path";
    idle.wait->onPathChanged();
    EXPECT_EQ(idle.looks, 2);
    idle.wait->onPathChanged();
    EXPECT_EQ(idle.wait, nullptr);
}

} // namespace
