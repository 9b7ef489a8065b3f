#include "harness/Testing.hpp"

#include "meta/MetaText.hpp"
#include "meta/MethodCall.hpp"

#include <oz/device/CellularRadioInfo.hpp>
#include <oz/device/SdCardState.hpp>
#include <oz/device/WiFiDirectSecondaryDeviceType.hpp>

#include <QJsonArray>
#include <QJsonObject>
#include <QSize>

using namespace oz;
using namespace oz::device;
using namespace oz::meta;

namespace {

// An object with the kinds of methods that facilities have.
class Callee : public QObject
{
    Q_OBJECT

public:
    Q_INVOKABLE QString join(const QString &text, int count) { return text + QString::number(count); }
    Q_INVOKABLE int add(int a, int b) { return a + b; }
    Q_INVOKABLE double add(double a) { return a + 0.5; }
    SdCardState::Type state = SdCardState::Unknown;

public Q_SLOTS:
    void setState(oz::device::SdCardState::Type newState) { state = newState; }

private Q_SLOTS:
    void hidden() { }
};

const QMetaType State = QMetaType::fromType<SdCardState::Type>();
const QMetaType Technologies = QMetaType::fromType<CellularTechnology::Types>();

TEST(MetaText, WritesValuesForPeopleAndAsJson)
{
    qRegisterMetaType<WiFiDirectSecondaryDeviceType::Type>();
    const std::tuple<QVariant, const char *, QJsonValue> rows[] = {
        {QVariant::fromValue(SdCardState::Mounted), "Mounted", "Mounted"},
        {QVariant::fromValue(CellularTechnology::Types(CellularTechnology::Gsm | CellularTechnology::Lte)),
            "Gsm|Lte", QJsonArray{"Gsm", "Lte"}},
        {QVariant::fromValue(
             CellularTechnology::Types(CellularTechnology::Gsm) | CellularTechnology::Types(64)),
            "Gsm|0x40", QJsonArray{"Gsm", "0x40"}},
        {QVariant::fromValue(CellularTechnology::Types()), "None", QJsonArray{}},
        {QVariant::fromValue(WiFiDirectSecondaryDeviceType::Types(WiFiDirectSecondaryDeviceType::Miracast)),
            "Miracast", "Miracast"},
        {"text", "\"text\"", "text"},
        {QString("\x1b[2J") + QChar(0x202e), "\"\\u001b[2J\\u202e\"", QString("\x1b[2J") + QChar(0x202e)},
        {25.34f, "25.34", 25.34},
        {-3, "-3", -3},
        {true, "true", true},
        {QSize(720, 1280), "720x1280", QJsonObject{{"width", 720}, {"height", 1280}}},
        {QVariantMap{{"a", 1}}, "{\"a\":1}", QJsonObject{{"a", 1}}},
    };
    for (const auto &[value, text, json] : rows) {
        EXPECT_EQ(valueText(value), text);
        EXPECT_EQ(valueJson(value), json) << text;
    }
    EXPECT_EQ(typeText(State), "SdCardState");
    EXPECT_EQ(typeText(Technologies), "CellularTechnology flags");
    EXPECT_EQ(typeText(QMetaType::fromType<int>()), "int");
}

TEST(MetaText, ReadsValuesByTypeAndDescribesWhatItExpects)
{
    EXPECT_EQ(parseValue("Busy", State), QVariant::fromValue(SdCardState::Busy));
    EXPECT_EQ(parseValue("2", State), QVariant::fromValue(SdCardState::Unmounted));
    EXPECT_EQ(parseValue("Gsm|Lte", Technologies),
        QVariant::fromValue(CellularTechnology::Types(CellularTechnology::Gsm | CellularTechnology::Lte)));
    EXPECT_EQ(parseValue("-12", QMetaType(QMetaType::Int)), QVariant(-12));
    EXPECT_EQ(parseValue("{\"a\":[1]}", QMetaType(QMetaType::QVariantMap)),
        QVariant(QVariantMap{{"a", QVariantList{1}}}));
    const std::tuple<const char *, QMetaType, const char *> rows[] = {
        {"Gone", State, "one of Unknown, Mounted, Unmounted, Busy"},
        {"Gsm|5G", Technologies, "any of None, Gsm, Umts, Cdma1X, Evdo, Lte joined with '|'"},
        {"ten", QMetaType(QMetaType::Int), "a whole number (int)"},
        {"99999999999", QMetaType(QMetaType::Int), "a whole number (int)"},
        {"yes", QMetaType(QMetaType::Bool), "true or false"},
        {"[1]", QMetaType(QMetaType::QVariantMap), "a JSON map"},
    };
    for (const auto &[text, type, expected] : rows) {
        EXPECT_EQ(parseValue(text, type), std::nullopt) << text;
        EXPECT_EQ(expectation(type), expected);
    }
}

TEST(MethodCall, CallsTheOverloadThatAcceptsTheWords)
{
    Callee callee;
    const auto result = [&](const QString &name, const QStringList &words) {
        QString problem;
        const auto call = MethodCall::find(callee.metaObject(), name, words, &problem);
        return call ? call->invoke(&callee) : QVariant(problem);
    };
    EXPECT_EQ(result("join", {"a", "7"}), QVariant("a7"));
    EXPECT_EQ(result("add", {"2", "3"}), QVariant(5));
    EXPECT_EQ(result("add", {"2"}), QVariant(2.5));
    EXPECT_FALSE(result("setState", {"Busy"}).isValid());
    EXPECT_EQ(callee.state, SdCardState::Busy);

    EXPECT_EQ(result("setState", {"Gone"}),
        QVariant("argument 1 of setState is one of Unknown, Mounted, Unmounted, Busy, not 'Gone'"));
    EXPECT_EQ(result("add", {}), QVariant("add(int a, int b) or add(double a) does not take 0 arguments"));
    EXPECT_EQ(result("hidden", {}), QVariant(""));
    EXPECT_EQ(result("deleteLater", {}), QVariant(""));
}

} // namespace

#include "MetaTest.moc"
