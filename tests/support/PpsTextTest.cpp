#include "harness/Testing.hpp"

#include <oz/PpsObject.hpp>
#include <oz/PpsText.hpp>

#include <QPoint>

#include <limits>

using namespace oz;

namespace {

QVariantMap decoded(const QByteArray &text)
{
    bool ok = false;
    const QVariantMap message = PpsObject::decode(text, &ok);
    EXPECT_TRUE(ok) << text.toStdString();
    return message;
}

QVariant nested(int levels)
{
    QVariant value = 1;
    for (int i = 0; i < levels; ++i)
        value = QVariantList{value};
    return value;
}

TEST(PpsText, EachValueHasOneShortestFormAndComesBackEqualAndOfItsType)
{
    const std::tuple<QVariant, const char *> rows[] = {
        {"plain text: with colons, \"quotes\" and \\", "a::plain text: with colons, \"quotes\" and \\\n"},
        {"", "a::\n"},
        {"tab\tstays", "a::tab\tstays\n"},
        {"two\nlines\\", "a:c:two\\nlines\\\\\n"},
        {QString::fromLatin1("\r\x1b\x7f\0", 4), "a:c:\\r\\x1B\\x7F\\x00\n"},
        {QChar(0xFEFF) + QString("mark \u00e9 \U0001F600"),
            "a::\xEF\xBB\xBFmark \xC3\xA9 \xF0\x9F\x98\x80\n"},
        {2147483647, "a:n:2147483647\n"},
        {2147483648LL, "a:n:2147483648\n"},
        {-9223372036854775807LL - 1, "a:n:-9223372036854775808\n"},
        {18446744073709551615ULL, "a:n:18446744073709551615\n"},
        {25.5, "a:n:25.5\n"},
        {2.0, "a:n:2.0\n"},
        {1e300, "a:n:1e+300\n"},
        {true, "a:b:true\n"},
        {QByteArray("\0\1\2", 3), "a:b64:AAEC\n"},
        {QVariantMap{}, "a:json:{}\n"},
        {QVariantList{1, 2.5, "x\ny", false, QVariant::fromValue(nullptr), QVariantMap{{"k", 4294967296LL}}},
            "a:json:[1,2.5,\"x\\ny\",false,null,{\"k\":4294967296}]\n"},
        {QVariantList{QString::fromUtf8("\xC3\xA9 \xF0\x9F\x98\x80 \"\\/\x7f")},
            "a:json:[\"\xC3\xA9 \xF0\x9F\x98\x80 \\\"\\\\/\x7f\"]\n"},
        {QVariant::fromValue(nullptr), "a:json:null\n"},
        {QVariant(), "-a\n"},
    };
    for (const auto &[value, line] : rows) {
        QString error;
        EXPECT_EQ(PpsText::encode({{"a", value}}, &error), QByteArray(line)) << error.toStdString();
        const QVariant back = decoded(line).value("@").toMap().value("a");
        EXPECT_EQ(back, value) << line;
        EXPECT_EQ(back.typeId(), value.typeId()) << line;
    }
    const QByteArray deepest = "a:json:" + QByteArray(64, '[') + "1" + QByteArray(64, ']') + '\n';
    EXPECT_EQ(PpsText::encode({{"a", nested(64)}}), deepest);
    EXPECT_EQ(decoded(deepest), (QVariantMap{{"@", QVariantMap{{"a", nested(64)}}}}));
}

TEST(PpsText, AMessageIsTheMapOfItsObject)
{
    EXPECT_EQ(decoded("@status\na::1\nb:n:2\na::3\n-c\n"),
        (QVariantMap{{"@status", QVariantMap{{"a", "3"}, {"b", 2}, {"c", QVariant()}}}}));
    EXPECT_EQ(decoded("a::no header, no line feed"),
        (QVariantMap{{"@", QVariantMap{{"a", "no header, no line feed"}}}}));
    EXPECT_EQ(decoded(""), (QVariantMap{{"@", QVariantMap{}}}));
    EXPECT_EQ(decoded("@sinks\n"), (QVariantMap{{"@sinks", QVariantMap{}}}));
    EXPECT_EQ(PpsText::encodeObject("status", {{"b", 2}, {"a", "x"}}), "@status\na::x\nb:n:2\n");
}

TEST(PpsText, WhatIsMalformedIsRefusedWithTheLineAndTheReason)
{
    const std::tuple<QByteArray, const char *> rows[] = {
        {"@x\na::1\nno colons\n", "line 3: neither 'name:qualifier:value' nor '-name'"},
        {"a:1\n", "line 1: neither 'name:qualifier:value' nor '-name'"},
        {"a::1\n\n", "line 2: neither 'name:qualifier:value' nor '-name'"},
        {"::1\n", "line 1: neither 'name:qualifier:value' nor '-name'"},
        {"a::1\n@late\n", "line 2: neither 'name:qualifier:value' nor '-name'"},
        {"-\n", "line 1: neither 'name:qualifier:value' nor '-name'"},
        {"a:q:1\n", "line 1: 'a' has the unknown qualifier 'q' (known are none, c, n, b, json, b64)"},
        {"a:n:1x\n", "line 1: the value of 'a' is not a number in range"},
        {"a:n:\n", "line 1: the value of 'a' is not a number in range"},
        {"a:n:nan\n", "line 1: the value of 'a' is not a number in range"},
        {"a:n:1e999\n", "line 1: the value of 'a' is not a number in range"},
        {"a:b:TRUE\n", "line 1: the value of 'a' is not true or false"},
        {"a:c:\\q\n", "line 1: the value of 'a' is not UTF-8 text with C escapes"},
        {"a:c:\\x4\n", "line 1: the value of 'a' is not UTF-8 text with C escapes"},
        {"a:c:\\xFF\n", "line 1: the value of 'a' is not UTF-8 text with C escapes"},
        {"a:b64:A!\n", "line 1: the value of 'a' is not base64"},
        {"a:b64:AAECA\n", "line 1: the value of 'a' is not base64"},
        {"a:json:[\"\\uD800\"]\n", "line 1: the value of 'a' is not valid JSON (or nested too deep)"},
        {"a:json:[\"\t\"]\n", "line 1: the value of 'a' is not valid JSON (or nested too deep)"},
        {"a:json:{\"x\":}\n", "line 1: the value of 'a' is not valid JSON (or nested too deep)"},
        {"a:json:[1e999]\n", "line 1: the value of 'a' is not valid JSON (or nested too deep)"},
        {QByteArray("a:json:[]\0x\n", 12), "line 1: the value of 'a' is not valid JSON (or nested too deep)"},
        {"a:json:" + QByteArray(65, '[') + QByteArray(65, ']'),
            "line 1: the value of 'a' is not valid JSON (or nested too deep)"},
        {"a:json:" + QByteArray(500'000, '['),
            "line 1: the value of 'a' is not valid JSON (or nested too deep)"},
        {"a::\xC3\n", "line 1: broken UTF-8"},
        {"@\xFF\n", "line 1: broken UTF-8"},
        {"a::" + QByteArray(1 << 20, 'x'), "1048579 bytes, more than the 1048576 of a message"},
    };
    for (const auto &[text, reason] : rows) {
        QString error;
        EXPECT_EQ(PpsText::decode(text, &error), QVariantMap()) << text.left(80).toStdString();
        EXPECT_EQ(error, reason) << text.left(80).toStdString();
        bool ok = true;
        EXPECT_EQ(PpsObject::decode(text, &ok), QVariantMap());
        EXPECT_FALSE(ok);
    }
}

TEST(PpsText, WhatHasNoFormIsRefusedWithTheAttributeAndTheReason)
{
    const char *badName = "a name that is empty, holds ':' or a line feed, or begins with '@' or '-'";
    const std::tuple<QString, QVariant, QString> rows[] = {
        {"", 1, badName},
        {"a:b", 1, badName},
        {"a\nb", 1, badName},
        {"@a", 1, badName},
        {"-a", QVariant(), badName},
        {"a", std::numeric_limits<double>::quiet_NaN(), "a number that is not finite"},
        {"a", QVariantList{std::numeric_limits<double>::infinity()}, "a number that is not finite"},
        {"a", QVariantMap{{"b", QByteArray("x")}}, "bytes inside a list or a map"},
        {"a", QVariantList{QVariant()}, "a value of type QVariant (invalid) inside a list or a map"},
        {"a", QPoint(1, 2), "a value of type QPoint"},
        {"a", QString(QChar(0xD800)), "text that is no valid UTF-16"},
        {"a", QVariantList{QString(QChar(0xD800))}, "text that is no valid UTF-16"},
        {"a", QVariantMap{{QString(QChar(0xDC00)), 1}}, "text that is no valid UTF-16"},
        {"a", nested(65), "nesting deeper than 64"},
    };
    for (const auto &[name, value, reason] : rows) {
        QString error;
        EXPECT_EQ(PpsText::encode({{name, value}}, &error), QByteArray());
        EXPECT_EQ(error, "attribute '" + name + "' cannot be encoded: " + reason);
    }
    QString error;
    EXPECT_EQ(PpsText::encode({{"a", QString(1 << 20, u'x')}}, &error), QByteArray());
    EXPECT_EQ(error, "1048580 bytes, more than the 1048576 of a message");
    bool ok = true;
    EXPECT_EQ(PpsObject::encode({{"a:b", 1}}, &ok), QByteArray());
    EXPECT_FALSE(ok);
}

} // namespace
