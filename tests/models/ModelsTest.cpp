// The list models over a simulated phone.

#include "services/Services.hpp"

#include <oz/device/WiFiDirectSecondaryDeviceType.hpp>
#include <oz/models/CellularNetworkModel.hpp>
#include <oz/models/DataProfileModel.hpp>
#include <oz/models/DisplayModel.hpp>
#include <oz/models/MiracastSinkModel.hpp>
#include <oz/models/NetworkInterfaceModel.hpp>
#include <oz/models/WiFiDirectPeerModel.hpp>

#include <QAbstractItemModelTester>

#include <random>

using namespace oz;
using namespace oz::device;
using namespace oz::models;
using namespace oz::harness;

namespace {

const QString Tv = "02:00:00:00:01:01";

/*! The rows as a view would show them, which knows only the model's signals. */
class Mirror : public QObject
{
public:
    explicit Mirror(RecordModel *model)
        : m_model(model), m_tester(model, QAbstractItemModelTester::FailureReportingMode::Warning)
    {
        for (int row = 0; row < model->count(); ++row)
            m_rows.append(model->record(row));
        connect(model, &RecordModel::rowsInserted, this, [this](const QModelIndex &, int first, int last) {
            EXPECT_EQ(first, last);
            m_rows.insert(first, m_model->record(first));
            changes.append("+" + QString::number(first));
        });
        connect(model, &RecordModel::rowsRemoved, this, [this](const QModelIndex &, int first, int last) {
            EXPECT_EQ(first, last);
            m_rows.removeAt(first);
            changes.append("-" + QString::number(first));
        });
        connect(model, &RecordModel::rowsMoved, this,
            [this](const QModelIndex &, int first, int, const QModelIndex &, int row) {
                m_rows.move(first, row);
                changes.append(QString("%1>%2").arg(first).arg(row));
            });
        connect(model, &RecordModel::dataChanged, this,
            [this](const QModelIndex &first, const QModelIndex &last, const QList<int> &roles) {
                EXPECT_EQ(first, last);
                QStringList names;
                for (const int role : roles) {
                    if (role == Qt::DisplayRole)
                        continue;
                    names.append(m_model->roleNames().value(role));
                    m_rows[first.row()].insert(names.last(), first.data(role));
                }
                changes.append(QString("%1:%2").arg(first.row()).arg(names.join('+')));
            });
        connect(model, &RecordModel::modelReset, this, [] { ADD_FAILURE() << "was reset"; });
    }
    [[nodiscard]] bool matchesModel() const
    {
        for (int row = 0; row < m_rows.size(); ++row) {
            if (m_rows.at(row) != m_model->record(row))
                return false;
        }
        return m_rows.size() == m_model->count();
    }
    QString takeChanges() { return std::exchange(changes, {}).join(' '); }

    QStringList changes;

private:
    const RecordModel *m_model;
    QAbstractItemModelTester m_tester;
    QList<QVariantMap> m_rows;
};

class Records : public RecordModel
{
public:
    Records() : RecordModel({"key", "value"}, "value", nullptr) { }
    void setRows(const QString &rows)
    {
        QList<Record> records;
        for (const QString &row : rows.split(' ', Qt::SkipEmptyParts))
            records.append({row.first(1), row.sliced(1)});
        setRecords(records);
    }
};

QString keysOf(const RecordModel &model)
{
    QStringList keys;
    for (int row = 0; row < model.count(); ++row)
        keys.append(model.index(row).data(Qt::UserRole).toString());
    return keys.join(' ');
}

class ModelsTest : public ServicesTest
{
protected:
    ModelsTest()
        : ServicesTest(R"({"wifi-direct": {"scan-seconds": 0.05, "connect-seconds": 0.05},
                           "miracast": {"scan-seconds": 0.05, "connect-seconds": 0.05}})")
    {
    }
};

} // namespace

TEST(RecordModelTest, SignalsEachDifferenceSeparately)
{
    struct Row
    {
        QString next, changes;
    };
    Records model;
    Mirror mirror(&model);
    for (const Row &row :
        {Row{"a1 b2 c3", "+0 +1 +2"}, Row{"a1 b2 c3", ""}, Row{"a1 b5 c3", "1:value"}, Row{"c3 a1 b5", "2>0"},
            Row{"a1 d4", "-2 -0 +1"}, Row{"d4 a2 a3 e5", "1>0 1:value +2"}, Row{"", "-2 -1 -0"}}) {
        model.setRows(row.next);
        EXPECT_EQ(mirror.takeChanges(), row.changes) << row.next.toStdString();
        EXPECT_TRUE(mirror.matchesModel()) << row.next.toStdString();
    }
}

TEST_F(ModelsTest, FollowThePhone)
{
    DisplayModel displays;
    DataProfileModel profiles;
    CellularNetworkModel networks;
    NetworkInterfaceModel interfaces;
    WiFiDirectPeerModel peers;
    EXPECT_EQ(keysOf(displays), "0 1");
    EXPECT_EQ(keysOf(profiles), "enterprise internet legacy mms tethering");
    EXPECT_EQ(keysOf(networks), "0");
    EXPECT_GE(interfaces.rowOf("lo"), 0);
    EXPECT_EQ(displays.index(0).data(), "panel"); // for widgets
    Mirror display(&displays);
    Mirror network(&networks);
    sim("display add 5 projector 640 480");
    EXPECT_TRUE(waitUntil([&] { return keysOf(displays) == "0 1 5"; }));
    EXPECT_EQ(display.takeChanges(), "+2");
    sim("display attach 1");
    EXPECT_TRUE(waitUntil([&] { return displays.record(1).value("attached").toBool(); }));
    sim("display remove 1");
    EXPECT_TRUE(waitUntil([&] { return keysOf(displays) == "0 5"; }));
    sim("cellular-network home-cdma serve");
    EXPECT_TRUE(waitUntil([&] { return networks.count() == 2; }));
    EXPECT_EQ(networks.record(1).value("technology"), int(CellularTechnology::Cdma1X));
    sim("wifi-direct peer-goes tv");
    EXPECT_TRUE(waitUntil([&] { return peers.rowOf(Tv) < 0; }));
    sim("wifi-direct peer-appears tv");
    EXPECT_EQ(peers.wifiDirect()->requestScan(), WiFiDirectResult::Success);
    EXPECT_TRUE(waitUntil([&] { return peers.rowOf(Tv) >= 0; }));
    const QVariantMap tv = peers.record(peers.rowOf(Tv));
    EXPECT_EQ(tv.value("name"), "Living room");
    EXPECT_NE(tv.value("secondaryTypes"), int(WiFiDirectSecondaryDeviceType::Unknown));
    EXPECT_EQ(tv.value("connected"), false);
}

TEST_F(ModelsTest, SinkModelListsTheSinksOfTheLastScan)
{
    MiracastSinkModel sinks;
    Mirror mirror(&sinks);
    const auto scan = [&] {
        bool ended = false;
        QObject context;
        QObject::connect(sinks.manager(), qOverload<int>(&MiracastManager::scanCompleted), &context,
            [&] { ended = true; });
        sinks.manager()->requestScan();
        EXPECT_TRUE(waitUntil([&] { return ended; }));
    };
    scan();
    const int found = sinks.count();
    ASSERT_GE(found, 2);
    sinks.manager()->requestConnect("02:00:00:00:02:01", "");
    const auto connected = [&] { return sinks.record(sinks.rowOf("02:00:00:00:02:01")).value("connected"); };
    EXPECT_TRUE(waitUntil([&] { return connected().toBool(); }));
    sinks.manager()->requestDisconnect();
    EXPECT_TRUE(waitUntil([&] { return !connected().toBool(); }));
    sim("miracast sink-goes projector");
    scan();
    EXPECT_EQ(sinks.count(), found - 1);
    EXPECT_TRUE(mirror.matchesModel());
}

TEST_F(ModelsTest, EqualNewModelsAfterRandomChanges)
{
    DisplayModel displays;
    DataProfileModel profiles;
    CellularNetworkModel networks;
    NetworkInterfaceModel interfaces;
    WiFiDirectPeerModel peers;
    MiracastSinkModel sinks;
    std::vector<std::unique_ptr<Mirror>> mirrors;
    for (RecordModel *model :
        std::initializer_list<RecordModel *>{&displays, &profiles, &networks, &interfaces, &peers, &sinks})
        mirrors.push_back(std::make_unique<Mirror>(model));
    const QStringList orders{"display add 7 seven 100 200", "display remove 7", "display attach 1",
        "display detach 1", "display rotate 0 90", "display rotate 0 0", "display resize 1 800 600",
        "data-profile mms enabled off", "data-profile mms enabled on", "cellular-network home-cdma serve",
        "cellular-network home-cdma leave", "cellular-network home-gsm serve",
        "cellular-network home-lte serve", "cellular-network home-lte rssi -70",
        "cellular-network home-lte rssi -90", "radio power off", "radio power on", "wifi-direct peer-goes tv",
        "wifi-direct peer-appears tv", "wifi-direct peer-goes printer", "wifi-direct peer-appears printer",
        "wifi-direct peer-goes camera", "wifi-direct peer-appears camera", "miracast sink-goes projector",
        "miracast sink-appears projector", "SCAN"};
    std::mt19937 random(20); // NOLINT: the same sequence each time
    for (int i = 0; i < 300; ++i) {
        const QString &order = orders.at(qsizetype(random() % size_t(orders.size())));
        if (order == "SCAN") {
            peers.wifiDirect()->requestScan();
            sinks.manager()->requestScan();
            interfaces.update();
        } else {
            simProblem(order); // may be refused if it changes nothing
        }
    }
    for (int row = 0; row < 3; ++row)
        sim(QStringList{"radio power on", "wifi-direct peer-appears tv", "display rotate 0 90"}.at(row));
    settle();
    const auto agrees = [](const RecordModel &model, const RecordModel &fresh) {
        for (int row = 0; row < fresh.count(); ++row) {
            QVariantMap expected = fresh.record(row), actual = model.record(row);
            for (const char *role : {"secondaryTypes", "role"}) { // only signals carry these
                expected.remove(role);
                actual.remove(role);
            }
            if (expected != actual)
                return false;
        }
        return model.count() == fresh.count();
    };
    EXPECT_TRUE(waitUntil([&] { return agrees(displays, DisplayModel()); }));
    EXPECT_TRUE(waitUntil([&] { return agrees(profiles, DataProfileModel()); }));
    EXPECT_TRUE(waitUntil([&] { return agrees(networks, CellularNetworkModel()); }));
    EXPECT_TRUE(waitUntil([&] { return agrees(peers, WiFiDirectPeerModel()); }));
    for (const auto &mirror : mirrors)
        EXPECT_TRUE(mirror->matchesModel());
}
