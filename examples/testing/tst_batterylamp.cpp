#include "BatteryLamp.hpp"

#include <oz/testing/Phone.hpp>

#include <QSignalSpy>
#include <QTest>

using namespace oz::device;
using namespace oz::testing;

/*! Tests the lamp in this process, each test on a private phone. */
class TestBatteryLamp : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        PhoneSettings settings;
        settings.set("battery.level", 50);
        m_phone = std::make_unique<Phone>(settings);
    }
    void cleanup() { m_phone.reset(); }

    void flashesOnceEachTimeTheBatteryGetsLow()
    {
        const BatteryLamp lamp;
        m_phone->battery().setLevel(10);
        m_phone->waitForRequest("led.flash", "color == red and count == 2");
        m_phone->waitFor("led.lit == red");
        m_phone->waitForRequest("led.cancel"); // after the second flash
        // The lamp is in this thread, and sees each level only when the event loop runs.
        const BatteryInfo battery;
        for (const int level : {9, 11, 10}) {
            m_phone->battery().setLevel(level);
            QTRY_COMPARE(battery.level(), level);
        }
        QCOMPARE(m_phone->waitForRequests(2, "led.flash").size(), 2);
    }

    void staysDarkWhileTheBatteryIsNotLow()
    {
        BatteryInfo battery;
        const BatteryLamp lamp;
        QSignalSpy levels(&battery, qOverload<int, int>(&BatteryInfo::levelChanged));
        m_phone->battery().setLevel(11);
        QTRY_COMPARE(levels.size(), 1);
        QVERIFY(m_phone->requests().isEmpty());
    }

private:
    std::unique_ptr<Phone> m_phone;
};

QTEST_GUILESS_MAIN(TestBatteryLamp)
#include "tst_batterylamp.moc"
