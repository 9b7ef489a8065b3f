#include "phone/JsonDocument.hpp"

#include "source/Error.hpp"

#include <QStringDecoder>

#include <algorithm>
#include <rapidjson/error/en.h>
#include <rapidjson/memorystream.h>
#include <rapidjson/reader.h>

namespace oz::services {

namespace {

constexpr std::size_t DeepestNesting = 100;

// Builds the values from the events of the JSON reader, which has read up to the end of each.
class ValueBuilder : public rapidjson::BaseReaderHandler<rapidjson::UTF8<>, ValueBuilder>
{
public:
    ValueBuilder(const QByteArray &text, const rapidjson::MemoryStream &stream)
        : m_text(text), m_stream(stream)
    {
    }

    bool Null() { return add({}); }
    bool Bool(bool value) { return add({JsonValue::Truth, value}); }
    bool RawNumber(const char *text, rapidjson::SizeType size, bool)
    {
        const QByteArray written(text, qsizetype(size));
        return add({JsonValue::Number, false, written.toDouble(), QString::fromLatin1(written)});
    }
    bool String(const char *text, rapidjson::SizeType size, bool)
    {
        return add({JsonValue::Text, false, 0, QString::fromUtf8(text, qsizetype(size))});
    }
    bool Key(const char *text, rapidjson::SizeType size, bool)
    {
        m_key = QString::fromUtf8(text, qsizetype(size));
        const auto &known = m_open.back().second.members;
        if (std::none_of(known.begin(), known.end(), [&](const auto &each) { return each.first == m_key; }))
            return true;
        m_problem = QLatin1String("there are two of '") + m_key + u'\'';
        return false;
    }
    bool StartObject() { return open(JsonValue::Map); }
    bool StartArray() { return open(JsonValue::List); }
    bool EndObject(rapidjson::SizeType) { return close(); }
    bool EndArray(rapidjson::SizeType) { return close(); }

    /*! The line up to which it is read. */
    int line()
    {
        const auto end = m_text.begin() + std::min(qsizetype(m_stream.Tell()), m_text.size());
        const auto begin = m_text.begin() + m_counted;
        m_line += int(std::count(begin, end, '\n'));
        m_counted = end - m_text.begin();
        return m_line;
    }
    [[nodiscard]] JsonValue &root() { return m_root; }
    /*! Why it wants no more, where the text is JSON. */
    [[nodiscard]] const QString &problem() const { return m_problem; }

private:
    bool add(JsonValue value)
    {
        value.line = line();
        put(m_key, std::move(value));
        return true;
    }
    void put(const QString &key, JsonValue value)
    {
        if (m_open.empty())
            m_root = std::move(value);
        else
            m_open.back().second.members.emplace_back(
                m_open.back().second.kind == JsonValue::Map ? key : QString(), std::move(value));
    }
    bool open(JsonValue::Kind kind)
    {
        if (m_open.size() == DeepestNesting) {
            m_problem = QStringLiteral("the values are nested too deeply");
            return false;
        }
        JsonValue value{kind};
        value.line = line();
        m_open.emplace_back(m_key, std::move(value));
        return true;
    }
    bool close()
    {
        auto [key, value] = std::move(m_open.back());
        m_open.pop_back();
        put(key, std::move(value));
        return true;
    }

    const QByteArray &m_text;
    const rapidjson::MemoryStream &m_stream;
    qsizetype m_counted = 0;
    int m_line = 1;
    QString m_key;
    std::vector<std::pair<QString, JsonValue>> m_open; // with the key of each
    JsonValue m_root;
    QString m_problem;
};

} // namespace

JsonDocument JsonDocument::parse(const QByteArray &text, const QString &file)
{
    QStringDecoder decoder(QStringDecoder::Utf8);
    if (const QString decoded = decoder(text); decoder.hasError() && !decoded.isNull())
        throw Error(file + QLatin1String(":1: the file is not UTF-8"));
    rapidjson::MemoryStream stream(text.constData(), std::size_t(text.size()));
    ValueBuilder builder(text, stream);
    rapidjson::Reader reader;
    constexpr unsigned Flags = rapidjson::kParseCommentsFlag | rapidjson::kParseNumbersAsStringsFlag
        | rapidjson::kParseIterativeFlag;
    if (const auto result = reader.Parse<Flags>(stream, builder); result.IsError()) {
        const QString problem = builder.problem().isEmpty()
            ? QString::fromLatin1(rapidjson::GetParseError_En(result.Code()))
            : builder.problem();
        throw Error(file + u':' + QString::number(builder.line()) + QLatin1String(": ") + problem);
    }
    return {file, text, std::move(builder.root())};
}

} // namespace oz::services
