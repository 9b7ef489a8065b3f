#include "harness/Testing.hpp"

#include <oz/PpsObject.hpp>
#include <oz/PpsPublisher.hpp>
#include <oz/device/SdCardInfo.hpp>

#include <QTimer>

using namespace oz;
using namespace oz::device;
using namespace oz::harness;

namespace {

const QString Path = "/pps/system/filesystem/removable/sdcard";

class SdCardInfoTest : public DeviceTest
{
protected:
    void publish(bool mounted, bool busy)
    {
        ASSERT_TRUE(publisher.publish({{"mounted", mounted}, {"busy", busy}}));
    }

    PpsPublisher publisher{Path};
};

TEST_F(SdCardInfoTest, ASlotSeesTheWholeNewStateAndMayDestroyTheObject)
{
    publish(false, false);
    auto *card = new SdCardInfo;
    QStringList seen;
    QObject::connect(card, qOverload<SdCardState::Type>(&SdCardInfo::stateChanged), [&] {
        EXPECT_EQ(card->activity(), SdCardActivity::Busy);
        seen.append("typed");
        delete card;
    });
    QObject::connect(card, qOverload<int>(&SdCardInfo::stateChanged), [&] { seen.append("int"); });
    publish(true, true);
    ASSERT_TRUE(waitUntil([&] { return !seen.isEmpty(); }));
    settle();
    EXPECT_EQ(seen, QStringList{"typed"});
}

TEST_F(SdCardInfoTest, ReadsWhateverIsPublishedByTheRulesOfBooleans)
{
    const std::tuple<const char *, SdCardState::Type, SdCardActivity::Type> rows[] = {
        {"@sdcard\nmounted:b:true\nbusy:b:true\n", SdCardState::Mounted, SdCardActivity::Busy},
        {"mounted:b:true\nbusy:b:true\n", SdCardState::Mounted, SdCardActivity::Busy},
        {"@sdcard\nbusy:b:true\n", SdCardState::Unmounted, SdCardActivity::Busy},
        {"@sdcard\nmounted:b:true\n", SdCardState::Mounted, SdCardActivity::Idle},
        {"@other\nmounted:b:true\nbusy:b:true\n", SdCardState::Unmounted, SdCardActivity::Idle},
        {"@sdcard\nmounted::yes\nbusy::False\n", SdCardState::Mounted, SdCardActivity::Idle},
        {"@sdcard\nmounted::0\nbusy::no\n", SdCardState::Unmounted, SdCardActivity::Busy},
        {"@sdcard\nmounted:n:2\nbusy:n:0\n", SdCardState::Mounted, SdCardActivity::Idle},
        {"", SdCardState::Unmounted, SdCardActivity::Idle},
    };
    for (const auto &[text, state, activity] : rows) {
        root.place(Path, text);
        SdCardInfo card;
        EXPECT_EQ(card.state(), state) << text;
        EXPECT_EQ(card.activity(), activity) << text;
    }
}

TEST_F(SdCardInfoTest, TheSlotTakesAnyPpsObjectAndRefusesEverythingElse)
{
    publish(false, false);
    SdCardInfo card;
    SignalLog heard(&card);
    QObject *half = card.children().value(0);
    ASSERT_TRUE(half);
    ASSERT_STREQ(half->metaObject()->className(), "oz::device::SdCardInfoPrivate");

    QTimer stranger;
    QObject::connect(&stranger, SIGNAL(timeout()), half, SLOT(onReadyRead()));
    stranger.start(0);
    ASSERT_TRUE(waitUntil([&] { return !log.categories().isEmpty(); }));
    stranger.stop();
    EXPECT_EQ(log.take().value(0), "SdCardinfo internal error: unexpected sender.");

    root.place("/pps/other", "@sdcard\nmounted:b:true\n");
    PpsObject other("/pps/other");
    QObject::connect(&other, SIGNAL(readyRead()), half, SLOT(onReadyRead()));
    ASSERT_TRUE(other.open(PpsOpenMode::Subscribe));
    EXPECT_EQ(heard.waitFor(2), "state(Mounted) state(1)");
}

} // namespace
