#include "BatteryLamp.hpp"

#include <oz/testing/Phone.hpp>

#include <QCoreApplication>

#include <gmock/gmock.h>

using namespace std::chrono_literals;
using oz::testing::Phone;

namespace {

// A private phone for each test, and the lamp on it.
class BatteryLampTest : public testing::Test
{
protected:
    Phone phone;
    BatteryLamp lamp;
};

TEST_F(BatteryLampTest, FlashesRedWhenTheBatteryGetsLow)
{
    phone.battery().setLevel(7);
    const auto flash = phone.waitForRequest("led.flash");
    EXPECT_EQ(flash.values.value("color"), "red");
    EXPECT_EQ(flash.values.value("count"), 2);
}

TEST_F(BatteryLampTest, FlashesAfterTheLedServiceRestarted)
{
    phone.led().killService();
    phone.battery().setLevel(7);
    phone.led().startService();
    phone.waitForRequest("led.flash", "color == red", 10s);
}

TEST_F(BatteryLampTest, FlashesWhenTheBatteryRunsDown)
{
    phone.clock().advance(std::chrono::hours(24)); // a percent in ten minutes
    phone.waitFor("battery.level == 0 and led.active");
}

} // namespace

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
