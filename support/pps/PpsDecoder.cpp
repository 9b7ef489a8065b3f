#include <oz/PpsText.hpp>

#include "pps/PpsTextParts.hpp"

#include <QStringConverter>
#include <QVariantList>

#include <rapidjson/reader.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <map>
#include <optional>
#include <vector>

namespace oz::PpsText {

namespace {

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
        m_levels.back().key = nameFrom({text, qsizetype(size)});
        return true;
    }
    bool StartObject() { return enter(true); }
    bool StartArray() { return enter(false); }
    bool EndObject(rapidjson::SizeType)
    {
        QVariant map = QVariantMap(std::move(m_levels.back().map));
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
        QString key;
        std::map<QString, QVariant> map;
        QVariantList list;
    };

    // Maps in a list mostly have the same members, which then share their names.
    QString nameFrom(QByteArrayView utf8)
    {
        const auto known = std::find_if(
            m_names.begin(), m_names.end(), [&](const auto &name) { return name.first == utf8; });
        if (known != m_names.end())
            return known->second;
        QString name = textFrom(utf8);
        if (m_names.size() < MostNames)
            m_names.emplace_back(utf8, name);
        return name;
    }
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
        else if (Level &level = m_levels.back(); level.isMap) // members mostly come in order
            level.map.insert_or_assign(level.map.end(), std::move(level.key), std::move(value));
        else
            level.list.append(std::move(value));
        return true;
    }

    static constexpr std::size_t MostNames = 16;

    std::vector<Level> m_levels;
    std::vector<std::pair<QByteArrayView, QString>> m_names; // as they stand in the text
    QVariant m_root;
};

// \a text is valid UTF-8, which the caller has checked.
std::optional<QVariant> parseJson(QByteArrayView text)
{
    // Numbers are converted here as everywhere else, exactly and with a check of their range.
    constexpr unsigned flags = rapidjson::kParseInsituFlag | rapidjson::kParseNumbersAsStringsFlag;
    QByteArray buffer = text.toByteArray();
    rapidjson::InsituStringStream stream(buffer.data());
    rapidjson::Reader reader;
    VariantBuilder builder;
    // The reader takes a NUL for the end of its input, so where it stopped is asked too.
    if (reader.Parse<flags>(stream, builder).IsError() || stream.Tell() != std::size_t(text.size()))
        return std::nullopt;
    return builder.takeRoot();
}

} // namespace

QVariant decodeValue(const PpsLine &line, QString *error)
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
        // A character left over holds no byte.
        const bool isWhole = (value.size() - value.count('=')) % 4 != 1;
        return decoded && isWhole ? QVariant(*decoded) : refuse("base64");
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

bool isValid(const QByteArray &message)
{
    QString problem;
    (void)decode(message, &problem);
    return problem.isEmpty();
}

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
            value = decodeValue(line, &reason);
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

} // namespace oz::PpsText
