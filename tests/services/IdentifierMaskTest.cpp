// Texts for people in recordings.

#include "facility/IdentifierMask.hpp"
#include "harness/Testing.hpp"

#include <QSysInfo>

using namespace oz::services;

namespace {

TEST(IdentifierMaskTest, ALineForPeopleSaysNothingOfWhoTheyAre)
{
    const QString host = QSysInfo::machineHostName();
    const QString hostMask = host == "localhost" ? host : "host-1";
    const std::pair<QString, QString> rows[] = {
        {"Ann's TV: no picture from 192.168.49.17", "sink-1: no picture from ip-address-1"},
        {"Ann's TV set and TV, not TVs", "sink-1 set and sink-2, not TVs"},
        {"a.b (again) is no aab (again)", "sink-3 is no aab (again)"},
        {"Über TV", "sink-4"},
        {"ANN'S tv, tv, ÜBER tv", "sink-1, sink-2, sink-4"},
        {"AA:bb:cc:00:11:22 is aa-bb-cc-00-11-22", "02:00:5e:00:00:01 is 02:00:5e:00:00:01"},
        {"wlxaabbcc001122, wlan0 and p2p-wlan0-3", "wlx02005e000001, wlan0 and p2p-wlan0-3"},
        {"wlx02005e000001 at 02:00:5e:00:00:01", "wlx02005e000001 at 02:00:5e:00:00:01"},
        {"dev_AA_BB_CC_00_11_22 is AABBCC001122", "dev_02:00:5e:00:00:01 is 02005e000001"},
        {"fe80::1ff:fe23:4567:890a, ::1 at 12:30:15", "ip-address-2, ip-address-3 at 12:30:15"},
        {"fe80::1ff:fe23:4567:890a: gone, at:2001:db8::7, oz::device",
            "ip-address-2: gone, at:ip-address-4, oz::device"},
        {"no modem '004999010640000', no 1234567 nor /dev/mmcblk1",
            "no modem 'id-1', no 1234567 nor /dev/mmcblk1"},
        {"8e6b3f4c-1d2e-4f5a-8b9c-0d1e2f3a4b5c, 0123456789abcdef0123456789abcdef", "id-2, id-3"},
        {"call +49 170 1234567 or +1-202-555-0143, deadbeefcafe", "call id-4 or id-5, id-6"},
        {"ann.b@mail.example.org, not user@1000.service", "email-1, not user@1000.service"},
        {"/home/ann/x.json, /run/media/ann/ANN-CARD: gone", "/home/user-1/x.json, /run/media/volume-1: gone"},
        {"/run/user/1000/pps: (it is for the user ann and the group root)",
            "/run/user/1000/pps: (it is for the user user-1 and the group root)"},
        {"/run/media/ann/ANN-CARD", "/run/media/volume-1"},
        {"/home/ben, /home/ben/x. /home/ben.", "/home/user-2, /home/user-2/x. /home/user-2."},
        {host + " and " + host + "-2", hostMask + " and " + host + "-2"},
        {"UPower 1.90.2 knows no battery 'BAT0' on seat0", "UPower 1.90.2 knows no battery 'BAT0' on seat0"},
    };
    IdentifierMask mask(false);
    for (const char *name : {"Ann's TV", "TV", "a.b (again)", "Über TV"})
        (void)mask.text("sink", name);
    IdentifierMask keeping(true);
    for (const auto &[line, masked] : rows) {
        EXPECT_EQ(mask.line(line).toStdString(), masked.toStdString());
        EXPECT_EQ(keeping.line(line), line);
    }
}

} // namespace
