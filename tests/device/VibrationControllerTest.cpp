#include "harness/Testing.hpp"

#include <oz/device/RequestError.hpp>
#include <oz/device/VibrationController.hpp>

#include <QFile>

using namespace oz::device;
using namespace oz::harness;

namespace {

const QString Vibrator = "/pps/services/vibrator";

using VibrationControllerTest = DeviceTest;

TEST_F(VibrationControllerTest, WritesTheDurationAndOneIntensityWhateverIsAskedFor)
{
    VibrationController motor;
    const std::tuple<std::function<void()>, QByteArray> rows[] = {
        {[&] { motor.start(30, 500); }, "duration:n:500\nintensity:n:100\n"},
        {[&] { motor.start(); }, "duration:n:2147483647\nintensity:n:100\n"},
        {[&] { motor.start(5); }, "duration:n:2147483647\nintensity:n:100\n"},
        {[&] { motor.start(1, 2147483647); }, "duration:n:2147483647\nintensity:n:100\n"},
        {[&] { motor.start(1, 2147483648); }, "duration:n:2147483647\nintensity:n:100\n"},
        {[&] { motor.start(1, 0); }, "duration:n:0\nintensity:n:100\n"},
        {[&] { motor.stop(); }, "duration:n:0\nintensity:n:0\n"},
    };
    for (const auto &[act, expected] : rows) {
        root.place(Vibrator, "");
        act();
        QFile written(root.file(Vibrator));
        ASSERT_TRUE(written.open(QIODevice::ReadOnly));
        EXPECT_EQ(written.readAll(), "@vibrator\n" + expected);
    }
    EXPECT_TRUE(motor.isSupported());
}

TEST_F(VibrationControllerTest, WarnsWithTheErrorOfWhatItCouldNotDo)
{
    VibrationController motor;
    EXPECT_FALSE(motor.isSupported());
    EXPECT_EQ(valuesOf(motor), "supported=false");
    EXPECT_EQ(log.take(), QStringList());
    const RequestError error;
    motor.start(1, 1);
    EXPECT_EQ(error.number(), ENOENT);
    EXPECT_EQ(error.text(), "No such file or directory");
    EXPECT_EQ(
        log.take(), QStringList{"oz::device::VibrationController::start : error opening pps channel:  2"});
    motor.stop();
    EXPECT_EQ(
        log.take(), QStringList{"oz::device::VibrationController::stop : error opening pps channel:  2"});
    EXPECT_EQ(log.categories(), (QStringList{"oz.device", "oz.device"}));

    // One that opens, in a directory where nothing can be replaced.
    root.place(Vibrator, "");
    root.setMode(Vibrator, 0666);
    root.setMode("/pps/services", 0555);
    EXPECT_EQ(runWithoutPrivileges([&] {
        motor.start();
        return error.number() == EACCES
            && log.take()
            == QStringList{"oz::device::VibrationController::start : error writing pps channel:  13"};
    }),
        1);
    root.setMode("/pps/services", 0755);
    motor.start();
    EXPECT_EQ(error.number(), 0);
}

} // namespace
