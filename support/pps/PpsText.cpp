#include <oz/PpsText.hpp>

#include "pps/PpsLines.hpp"

#include <QStringConverter>
#include <QVariantList>

#include <rapidjson/memorystream.h>
#include <rapidjson/reader.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <charconv>
#include <cmath>
#include <limits>
#include <optional>

namespace oz::PpsText {

namespace {

constexpr char HexDigits[] = "0123456789ABCDEF";

// QString::fromUtf8() swallows a leading byte order mark; here every character counts.
QString textFrom(QByteArrayView utf8)
{
    if (!utf8.startsWith("\xEF\xBB\xBF")) [[likely]]
        return QString::fromUtf8(utf8);
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::ConvertInitialBom);
    return decoder.decode(utf8);
}

template <typename Number>
std::optional<Number> parseWhole(QByteArrayView text)
{
    Number number{};
    const char *end = text.data() + text.size();
    const auto [rest, problem] = std::from_chars(text.data(), end, number);
    if (problem != std::errc() || rest != end)
        return std::nullopt;
    return number;
}

QVariant integerVariant(qint64 number)
{
    if (number >= std::numeric_limits<int>::min() && number <= std::numeric_limits<int>::max())
        return int(number);
    return qlonglong(number);
}

QVariant parseNumber(QByteArrayView text)
{
    if (const auto integer = parseWhole<qint64>(text))
        return integerVariant(*integer);
    if (const auto integer = parseWhole<quint64>(text))
        return qulonglong(*integer);
    if (const auto number = parseWhole<double>(text); number && std::isfinite(*number))
        return *number;
    return {};
}

std::optional<QByteArray> unescape(QByteArrayView text)
{
    const auto hexValue = [](char digit) {
        const char upper = digit >= 'a' && digit <= 'f' ? char(digit - 'a' + 'A') : digit;
        const char *found = upper ? std::char_traits<char>::find(HexDigits, 16, upper) : nullptr;
        return found ? int(found - HexDigits) : -1;
    };
    QByteArray out;
    out.reserve(text.size());
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (text[i] != '\\') {
            out.append(text[i]);
            continue;
        }
        if (++i == text.size())
            return std::nullopt;
        switch (text[i]) {
        case 'n':
            out.append('\n');
            break;
        case 't':
            out.append('\t');
            break;
        case 'r':
            out.append('\r');
            break;
        case '\\':
            out.append('\\');
            break;
        case '"':
            out.append('"');
            break;
        case 'x': {
            const int high = i + 2 < text.size() ? hexValue(text[i + 1]) : -1;
            const int low = i + 2 < text.size() ? hexValue(text[i + 2]) : -1;
            if (high < 0 || low < 0)
                return std::nullopt;
            out.append(char(high * 16 + low));
            i += 2;
            break;
        }
        default:
            return std::nullopt;
        }
    }
    return out;
}

// Builds a QVariant from the events of the JSON reader.
class VariantBuilder : public rapidjson::BaseReaderHandler<rapidjson::UTF8<>, VariantBuilder>
{
public:
    [[nodiscard]] QVariant takeRoot() { return std::move(m_root); }

    bool Null() { return add(QVariant::fromValue(nullptr)); }
    bool Bool(bool value) { return add(value); }
    bool RawNumber(const char *text, rapidjson::SizeType size, bool)
    {
        QVariant number = parseNumber({text, qsizetype(size)});
        return number.isValid() && add(std::move(number));
    }
    bool String(const char *text, rapidjson::SizeType size, bool)
    {
        return add(textFrom({text, qsizetype(size)}));
    }
    bool Key(const char *text, rapidjson::SizeType size, bool)
    {
        m_levels.back().key = textFrom({text, qsizetype(size)});
        return true;
    }
    bool StartObject() { return enter(true); }
    bool StartArray() { return enter(false); }
    bool EndObject(rapidjson::SizeType)
    {
        QVariant map = m_levels.back().map;
        m_levels.pop_back();
        return add(std::move(map));
    }
    bool EndArray(rapidjson::SizeType)
    {
        QVariant list = m_levels.back().list;
        m_levels.pop_back();
        return add(std::move(list));
    }

private:
    struct Level
    {
        bool isMap;
        QVariantMap map;
        QVariantList list;
        QString key;
    };

    bool enter(bool isMap)
    {
        if (m_levels.size() >= MaxDepth)
            return false;
        m_levels.push_back({isMap, {}, {}, {}});
        return true;
    }
    bool add(QVariant &&value)
    {
        if (m_levels.empty())
            m_root = std::move(value);
        else if (Level &level = m_levels.back(); level.isMap)
            level.map.insert(level.key, value);
        else
            level.list.append(std::move(value));
        return true;
    }

    std::vector<Level> m_levels;
    QVariant m_root;
};

std::optional<QVariant> parseJson(QByteArrayView text)
{
    // Numbers are converted here as everywhere else, exactly and with a check of their range.
    constexpr unsigned flags = rapidjson::kParseValidateEncodingFlag | rapidjson::kParseNumbersAsStringsFlag;
    rapidjson::MemoryStream stream(text.data(), std::size_t(text.size()));
    rapidjson::Reader reader;
    VariantBuilder builder;
    // The reader takes a NUL for the end of its input, so where it stopped is asked too.
    if (reader.Parse<flags>(stream, builder).IsError() || stream.Tell() != std::size_t(text.size()))
        return std::nullopt;
    return builder.takeRoot();
}

// The value of one line; an invalid QVariant, with the error text, where it does not fit the qualifier.
QVariant parseValue(const PpsLine &line, QString *error)
{
    const QByteArrayView qualifier = line.qualifier;
    const QByteArrayView value = line.value;
    const auto refuse = [&](const char *expected) {
        *error = QLatin1String("the value of '") + textFrom(line.name) + QLatin1String("' is not ")
            + QLatin1String(expected);
        return QVariant();
    };
    if (qualifier.isEmpty())
        return textFrom(value);
    if (qualifier == "n") {
        const QVariant number = parseNumber(value);
        return number.isValid() ? number : refuse("a number in range");
    }
    if (qualifier == "b") {
        if (value == "true")
            return true;
        return value == "false" ? QVariant(false) : refuse("true or false");
    }
    if (qualifier == "json") {
        const auto json = parseJson(value);
        return json ? *json : refuse("valid JSON (or nested too deep)");
    }
    if (qualifier == "c") {
        const auto bytes = unescape(value);
        if (!bytes || !bytes->isValidUtf8())
            return refuse("UTF-8 text with C escapes");
        return textFrom(*bytes);
    }
    if (qualifier == "b64") {
        const auto decoded = QByteArray::fromBase64Encoding(
            QByteArray::fromRawData(value.data(), value.size()), QByteArray::AbortOnBase64DecodingErrors);
        return decoded ? QVariant(*decoded) : refuse("base64");
    }
    *error = QLatin1String("'") + textFrom(line.name) + QLatin1String("' has the unknown qualifier '")
        + textFrom(qualifier) + QLatin1String("' (known are none, c, n, b, json, b64)");
    return {};
}

QString sizeError(qsizetype size)
{
    return QString::number(size) + QLatin1String(" bytes, more than the ") + QString::number(MaxMessageSize)
        + QLatin1String(" of a message");
}

// The encoder. Each function returns false with the error set where the value has no form.
using JsonWriter = rapidjson::Writer<rapidjson::StringBuffer>;

bool refuseValue(const char *what, QString *error)
{
    *error = QLatin1String(what);
    return false;
}

bool integerOf(const QVariant &value, qint64 *number)
{
    switch (value.typeId()) {
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::Long:
    case QMetaType::LongLong:
    case QMetaType::Short:
    case QMetaType::UShort:
    case QMetaType::Char:
    case QMetaType::SChar:
    case QMetaType::UChar:
        *number = value.toLongLong();
        return true;
    default:
        return false;
    }
}

bool writeText(JsonWriter *writer, const QString &text, QString *error)
{
    if (!text.isValidUtf16())
        return refuseValue("text that is no valid UTF-16", error);
    const QByteArray utf8 = text.toUtf8();
    return writer->String(utf8.constData(), rapidjson::SizeType(utf8.size()));
}

bool writeJson(JsonWriter *writer, const QVariant &value, int depth, QString *error)
{
    const auto tooDeep = [&] { return depth > MaxDepth && !refuseValue("nesting deeper than 64", error); };
    if (qint64 number; integerOf(value, &number))
        return writer->Int64(number);
    switch (value.typeId()) {
    case QMetaType::ULong:
    case QMetaType::ULongLong:
        return writer->Uint64(value.toULongLong());
    case QMetaType::Float:
    case QMetaType::Double:
        return writer->Double(value.toDouble()) || refuseValue("a number that is not finite", error);
    case QMetaType::Bool:
        return writer->Bool(value.toBool());
    case QMetaType::QString:
        return writeText(writer, value.toString(), error);
    case QMetaType::Nullptr:
        return writer->Null();
    case QMetaType::QStringList:
    case QMetaType::QVariantList: {
        if (tooDeep())
            return false;
        writer->StartArray();
        for (const QVariant &element : value.toList()) {
            if (!writeJson(writer, element, depth + 1, error))
                return false;
        }
        return writer->EndArray();
    }
    case QMetaType::QVariantMap: {
        if (tooDeep())
            return false;
        writer->StartObject();
        const QVariantMap map = value.toMap();
        for (auto entry = map.cbegin(); entry != map.cend(); ++entry) {
            if (!writeText(writer, entry.key(), error) || !writeJson(writer, *entry, depth + 1, error))
                return false;
        }
        return writer->EndObject();
    }
    case QMetaType::QByteArray:
        return refuseValue("bytes inside a list or a map", error);
    default:
        *error = QLatin1String("a value of type ")
            + QLatin1String(value.isValid() ? value.typeName() : "QVariant (invalid) inside a list or a map");
        return false;
    }
}

bool isControl(char byte)
{
    return (byte >= 0 && byte < 0x20 && byte != '\t') || byte == 0x7f;
}

// Text goes as it stands unless it holds a control character, which would end the line or confuse a terminal.
void appendText(QByteArray *out, const QByteArray &utf8)
{
    if (std::none_of(utf8.begin(), utf8.end(), isControl)) {
        out->append(':').append(utf8);
        return;
    }
    out->append("c:");
    for (const char byte : utf8) {
        switch (byte) {
        case '\n':
            out->append("\\n");
            break;
        case '\r':
            out->append("\\r");
            break;
        case '\t':
            out->append("\\t");
            break;
        case '\\':
            out->append("\\\\");
            break;
        default:
            if (isControl(byte))
                out->append("\\x").append(HexDigits[byte >> 4]).append(HexDigits[byte & 15]);
            else
                out->append(byte);
        }
    }
}

QByteArray shortestDouble(double number)
{
    char buffer[32];
    const auto [end, problem] = std::to_chars(buffer, buffer + sizeof buffer, number);
    Q_ASSERT(problem == std::errc());
    QByteArray text(buffer, end - buffer);
    // "2" would come back as an int.
    if (!text.contains('.') && !text.contains('e'))
        text.append(".0");
    return text;
}

// Appends "qualifier:value" of one attribute.
bool appendValue(QByteArray *out, const QVariant &value, QString *error)
{
    if (qint64 number; integerOf(value, &number)) {
        out->append("n:").append(QByteArray::number(number));
        return true;
    }
    switch (value.typeId()) {
    case QMetaType::QString: {
        const QString text = value.toString();
        if (!text.isValidUtf16())
            return refuseValue("text that is no valid UTF-16", error);
        appendText(out, text.toUtf8());
        return true;
    }
    case QMetaType::Bool:
        out->append(value.toBool() ? "b:true" : "b:false");
        return true;
    case QMetaType::ULong:
    case QMetaType::ULongLong:
        out->append("n:").append(QByteArray::number(value.toULongLong()));
        return true;
    case QMetaType::Float:
    case QMetaType::Double:
        if (!std::isfinite(value.toDouble()))
            return refuseValue("a number that is not finite", error);
        out->append("n:").append(shortestDouble(value.toDouble()));
        return true;
    case QMetaType::QByteArray:
        out->append("b64:").append(value.toByteArray().toBase64());
        return true;
    default: {
        rapidjson::StringBuffer buffer;
        JsonWriter writer(buffer);
        if (!writeJson(&writer, value, 1, error))
            return false;
        out->append("json:").append(buffer.GetString(), qsizetype(buffer.GetSize()));
        return true;
    }
    }
}

bool appendName(QByteArray *out, const QString &name, QString *error)
{
    if (name.isEmpty() || !name.isValidUtf16() || name.contains(u':') || name.contains(u'\n')
        || name.startsWith(u'@') || name.startsWith(u'-')) {
        return refuseValue(
            "a name that is empty, holds ':' or a line feed, or begins with '@' or '-'", error);
    }
    out->append(name.toUtf8());
    return true;
}

bool appendAttribute(QByteArray *out, const QString &name, const QVariant &value, QString *error)
{
    if (!value.isValid()) {
        out->append('-');
        if (!appendName(out, name, error))
            return false;
    } else {
        if (!appendName(out, name, error))
            return false;
        out->append(':');
        if (!appendValue(out, value, error))
            return false;
    }
    out->append('\n');
    return true;
}

QByteArray encodeOnto(QByteArray out, const QVariantMap &attributes, QString *error)
{
    for (auto entry = attributes.cbegin(); entry != attributes.cend(); ++entry) {
        QString reason;
        if (!appendAttribute(&out, entry.key(), *entry, &reason)) {
            *error =
                QLatin1String("attribute '") + entry.key() + QLatin1String("' cannot be encoded: ") + reason;
            return {};
        }
    }
    if (out.size() > MaxMessageSize) {
        *error = sizeError(out.size());
        return {};
    }
    return out;
}

// Gives the callers that want no error text a place to put it, and clears it for the others.
class ErrorText
{
public:
    explicit ErrorText(QString *wanted) : m_text(wanted ? wanted : &m_unwanted) { m_text->clear(); }
    QString *operator&() { return m_text; }
    QString &operator*() { return *m_text; }

private:
    QString m_unwanted;
    QString *m_text;
};

} // namespace

QVariantMap decode(const QByteArray &data, QString *error)
{
    ErrorText problem(error);
    if (data.size() > MaxMessageSize) {
        *problem = sizeError(data.size());
        return {};
    }
    PpsLines lines(data);
    QVariantMap attributes;
    for (PpsLine line; lines.next(&line);) {
        const auto refuse = [&](const QString &reason) {
            *problem =
                QLatin1String("line ") + QString::number(lines.lineNumber()) + QLatin1String(": ") + reason;
            return QVariantMap();
        };
        if (!QUtf8StringView(line.text.data(), line.text.size()).isValidUtf8())
            return refuse(QStringLiteral("broken UTF-8"));
        if (line.malformed)
            return refuse(QStringLiteral("neither 'name:qualifier:value' nor '-name'"));
        QVariant value;
        if (!line.removal) {
            QString reason;
            value = parseValue(line, &reason);
            if (!value.isValid())
                return refuse(reason);
        }
        attributes.insert(textFrom(line.name), value);
    }
    const QByteArrayView header = lines.header();
    if (!QUtf8StringView(header.data(), header.size()).isValidUtf8()) {
        *problem = QStringLiteral("line 1: broken UTF-8");
        return {};
    }
    return {{QLatin1Char('@') + textFrom(header), attributes}};
}

QByteArray encode(const QVariantMap &attributes, QString *error)
{
    ErrorText problem(error);
    return encodeOnto({}, attributes, &problem);
}

QByteArray encodeObject(const QString &objectName, const QVariantMap &attributes, QString *error)
{
    ErrorText problem(error);
    if (objectName.isEmpty() || objectName.contains(u'\n') || !objectName.isValidUtf16()) {
        *problem = QLatin1String("'") + objectName + QLatin1String("' is no name of an object");
        return {};
    }
    return encodeOnto('@' + objectName.toUtf8() + '\n', attributes, &problem);
}

} // namespace oz::PpsText
