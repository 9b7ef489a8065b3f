#include "device/Objects.hpp"
#include "harness/ControlService.hpp"
#include "harness/Testing.hpp"

#include <oz/Limits.hpp>
#include <oz/device/CellularDataInterface.hpp>

#include <QElapsedTimer>
#include <QFile>
#include <QTimer>

using namespace oz;
using namespace oz::device;
using namespace oz::harness;

namespace {

using Result = CellularConnectionRequestResult;

const QString Status = "/pps/services/cds/cnice/status";
const QString Control = "/pps/services/cds/cnice/web_control";

const QByteArray Service = R"(@status
data_services_status::ON
data_roaming_status::HOME
user_enabled_data_roaming:b:false
)";
const QByteArray Web = Service
    + R"(web:json:{"enabled":true,"always_on":true,"access_controlled":true,)"
      R"("active":true,"connected":true,"net_if":"rmnet0","apn":"internet"}
mms:json:{"enabled":true,"active":true,"connected":false,"apn":"mms"}
)";
const QString NoState = "valid=false alwaysOn=false accessControlled=false networkInterfaceName=\"\" "
                        "accessPointName=\"\" connectionState=Disconnected";

const QByteArray Connected = "res::connect\nid::123\ndat:json:{\"connect_id\":\"c7\"}\n";
const QVariantMap ConnectRequest{{"msg", "connect"}, {"id", "123"}};
const QVariantMap DisconnectRequest{
    {"msg", "disconnect"}, {"id", "123"}, {"dat", QVariantMap{{"connect_id", "c7"}}}};

class CellularDataInterfaceTest : public DeviceTest
{
protected:
    void SetUp() override { root.place(Status, Web); }
};

TEST_F(CellularDataInterfaceTest, ListsTheProfilesWithoutTheServicesOwnAttributes)
{
    const CellularDataInterface none;
    EXPECT_EQ(none.allNames(), (QStringList{"mms", "web"}));
    root.place(Status, Service);
    EXPECT_EQ(none.allNames(), QStringList());
    root.place(Status, "web\n");
    EXPECT_EQ(none.allNames(), QStringList());
    root.remove(Status);
    EXPECT_EQ(none.allNames(), QStringList());
    EXPECT_EQ(log.take(),
        (QStringList{"CellularDataInterface - failed to decode status PPS data",
            "CellularDataInterface - failed to open status PPS object:" + Missing}));
}

TEST_F(CellularDataInterfaceTest, ReadsItsProfileAndSignalsOnlyWhatChangesThere)
{
    CellularDataInterface web("web");
    SignalLog heard(&web);
    root.place(Status, Web + "web:json:{\"enabled\":true,\"always_on\":true,\"active\":true}\n");
    EXPECT_EQ(heard.waitFor(5),
        "accessControlled(false) connectionState(PendingConnect) connectionState(1) "
        R"(networkInterfaceName("") accessPointName(""))");
    root.place(Status, Web + "web:json:{\"connected\":true}\n");
    EXPECT_EQ(
        heard.waitFor(4), "valid(false) alwaysOn(false) connectionState(Disconnected) connectionState(0)");
    // A profile that is no map, or not there, has no attributes either; other profiles are no news.
    root.place(Status, Web + "web::enabled\n");
    root.place(Status, Service + "web2:json:{\"enabled\":true}\n");
    EXPECT_EQ(heard.settled(), "");
    EXPECT_EQ(valuesOf(web), "name=\"web\" " + NoState);
}

TEST_F(CellularDataInterfaceTest, AnotherNameIsAnnouncedAfterWhatDiffersThere)
{
    CellularDataInterface profile;
    SignalLog heard(&profile);
    EXPECT_EQ(valuesOf(profile), "name=\"\" " + NoState);
    profile.setName("");
    EXPECT_EQ(heard.take(), "");
    EXPECT_TRUE(profile.setProperty("name", "mms"));
    EXPECT_EQ(heard.take(),
        "valid(true) connectionState(PendingConnect) connectionState(1) "
        R"(accessPointName("mms") name("mms"))");
    profile.setName("mms");
    EXPECT_EQ(heard.settled(), "");
    profile.setName("");
    EXPECT_TRUE(heard.take().endsWith(R"( name(""))"));
    EXPECT_EQ(valuesOf(profile), "name=\"\" " + NoState);

    root.remove(Status);
    profile.setName("web");
    EXPECT_EQ(heard.take(), R"(name("web"))");
    EXPECT_EQ(log.take(), QStringList{"CellularDataInterface - failed to open status PPS object:" + Missing});
    SetUp();
    EXPECT_EQ(heard.settled(), "");
}

TEST_F(CellularDataInterfaceTest, ASlotMayDestroyTheObjectBeforeItsNewNameIsAnnounced)
{
    auto *profile = new CellularDataInterface;
    EXPECT_TRUE(endsWithSignal(1, profile, [&] { profile->setName("web"); }));
}

TEST_F(CellularDataInterfaceTest, ConnectsOnceAndDisconnectsWhatItConnected)
{
    ControlService service(Control, ControlService::answer(Connected));
    {
        CellularDataInterface web("web");
        EXPECT_EQ(web.requestDisconnect(), Result::NotPossible);
        EXPECT_EQ(service.take(), QList<QVariantMap>());
        for (const char *slot : {"requestConnect()", "requestDisconnect()"})
            EXPECT_GE(web.metaObject()->indexOfSlot(slot), 0) << slot;
        EXPECT_GE(web.metaObject()->indexOfMethod("allNames()"), 0);
        EXPECT_EQ(web.requestConnect(), Result::Requested);
        EXPECT_EQ(web.requestConnect(), Result::NotPossible);
        EXPECT_EQ(service.take(), QList<QVariantMap>{ConnectRequest});
        EXPECT_EQ(web.requestDisconnect(), Result::Requested);
        EXPECT_EQ(web.requestDisconnect(), Result::NotPossible);
        EXPECT_EQ(service.take(), QList<QVariantMap>{DisconnectRequest});

        EXPECT_EQ(web.requestConnect(), Result::Requested);
        web.setName("mms");
        EXPECT_EQ(service.take(), (QList<QVariantMap>{ConnectRequest, DisconnectRequest}));
        web.setName("web");
        EXPECT_EQ(web.requestConnect(), Result::Requested);
    }
    EXPECT_EQ(service.take(), (QList<QVariantMap>{ConnectRequest, DisconnectRequest}));
}

TEST_F(CellularDataInterfaceTest, TheAnswerDecidesTheResult)
{
    const QString undecodable = "CellularDataInterface - failed to decode control PPS data";
    const QString unread =
        "CellularDataInterface - failed to read control PPS data:  \"Connection reset by peer\"";
    // Without an answer the service hangs up.
    const std::tuple<const char *, Result::Type, Result::Type, QStringList> rows[] = {
        {"@web_control\nerr:n:0\n", Result::Requested, Result::Requested, {}},
        {"@web_control\nerr:n:13\n", Result::NotPossible, Result::InternalError, {}},
        {"res::other\nid::999\nerr:n:0\n", Result::Requested, Result::Requested, {}},
        {"err::13\n", Result::NotPossible, Result::InternalError, {}},
        {"err:n:5\nerrstr::busy\ndat:json:{\"connect_id\":\"c8\"}\n", Result::InternalError,
            Result::InternalError, {}},
        {"rubbish", Result::InternalError, Result::InternalError, {undecodable}},
        {nullptr, Result::InternalError, Result::InternalError, {unread}},
    };
    ControlService service(Control, ControlService::hangUp);
    for (const auto &[answer, connect, disconnect, warnings] : rows) {
        const auto serve = answer ? ControlService::answer(answer) : ControlService::hangUp;
        CellularDataInterface web("web");
        service.serveWith(serve);
        EXPECT_EQ(web.requestConnect(), connect) << answer;
        EXPECT_EQ(log.take(), warnings) << answer;
        // Without a connection's id there is none to end.
        EXPECT_EQ(web.requestDisconnect(), Result::NotPossible) << answer;

        service.serveWith(ControlService::answer(Connected));
        ASSERT_EQ(web.requestConnect(), Result::Requested);
        service.serveWith(serve);
        EXPECT_EQ(web.requestDisconnect(), disconnect) << answer;
        EXPECT_EQ(log.take(), warnings) << answer;
        EXPECT_EQ(web.requestDisconnect(), Result::NotPossible) << answer;
    }
}

TEST_F(CellularDataInterfaceTest, WaitsForALateAnswerButForNoSecondOneAndForNoServiceThatDiesOrIsSilent)
{
    CellularDataInterface web("web");
    ControlService late(Control, [](PpsServer &server, quint64 client) {
        QTimer::singleShot(120, &server, [&server, client] { server.send(client, Connected); });
    });
    QElapsedTimer waited;
    waited.start();
    EXPECT_EQ(web.requestConnect(), Result::Requested);
    EXPECT_GE(waited.elapsed(), 110);

    // A message after the answer does not belong to the next exchange.
    late.serveWith([](PpsServer &server, quint64 client) {
        server.send(client, QByteArray("err:n:0\n"));
        server.send(client, QByteArray("err:n:5\n"));
    });
    EXPECT_EQ(web.requestDisconnect(), Result::Requested);
    EXPECT_EQ(web.requestConnect(), Result::Requested);

    const QString MmsControl = "/pps/services/cds/cnice/mms_control";
    ControlService dying(MmsControl, [](PpsServer &server, quint64) { server.deleteLater(); });
    CellularDataInterface mms("mms");
    EXPECT_EQ(mms.requestConnect(), Result::InternalError);
    EXPECT_EQ(log.take().size(), 1);
    ASSERT_TRUE(waitUntil([&] { return !QFile::exists(root.file(MmsControl)); }));
    EXPECT_EQ(mms.requestConnect(), Result::InvalidInterface);

    const ControlService silent(MmsControl, [](PpsServer &, quint64) {});
    setWaitLimit(std::chrono::milliseconds(20));
    EXPECT_EQ(mms.requestConnect(), Result::InternalError);
    setWaitLimit(std::chrono::seconds(60));
    EXPECT_EQ(log.take(),
        QStringList{"CellularDataInterface - failed to read control PPS data:  \"Connection timed out\""});
}

TEST_F(CellularDataInterfaceTest, AControlObjectThatDoesNotOpenIsToldWithoutAWarning)
{
    for (const char *name : {"", "web", "../web"})
        EXPECT_EQ(CellularDataInterface(name).requestConnect(), Result::InvalidInterface) << name;
    EXPECT_EQ(CellularDataInterface().requestDisconnect(), Result::InvalidInterface);
    CellularDataInterface web("web");
    PpsServer server(Control);
    ASSERT_TRUE(server.listen(0));
    const auto request = [&] {
        const int result = web.requestConnect();
        return log.take().isEmpty() ? result : 100;
    };
    EXPECT_EQ(runWithoutRights(request), Result::PermissionDenied);
}

TEST_F(CellularDataInterfaceTest, NoExchangeLeavesADescriptorOpen)
{
    CellularDataInterface web("web");
    ControlService service(Control, ControlService::hangUp);
    const auto before = openDescriptors();
    ASSERT_GT(before, 5);
    for (int i = 0; i < 2'500; ++i) { // of four exchanges each
        for (const char *message : {Connected.constData(), "err:n:1\n", "rubbish"}) {
            service.serveWith(ControlService::answer(message));
            web.requestConnect();
            service.serveWith(ControlService::hangUp);
            web.requestDisconnect();
        }
    }
    EXPECT_TRUE(waitUntil([&] { return openDescriptors() == before; }));
    log.take();
}

} // namespace
