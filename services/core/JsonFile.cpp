#include "core/JsonFile.hpp"

#include "core/Error.hpp"

#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QVariantList>

#include <rapidjson/error/en.h>
#include <rapidjson/memorystream.h>
#include <rapidjson/reader.h>

namespace oz::services {

struct JsonNode::Data
{
    enum Kind { Null, Boolean, Number, Text, List, Map };

    Kind kind = Map;
    QVariant value;
    std::vector<std::pair<QString, std::shared_ptr<Data>>> members;
    std::vector<std::shared_ptr<Data>> elements;
    QString file;
    QString path; // "sdcard.mounted", empty for the file's own value
    int line = 1;

    [[nodiscard]] QString description() const
    {
        switch (kind) {
        case Null:
            return QStringLiteral("null");
        case Boolean:
            return value.toBool() ? QStringLiteral("true") : QStringLiteral("false");
        case Number:
            return value.toString();
        case Text:
            return QLatin1String("\"") + value.toString() + QLatin1String("\"");
        case List:
            return QStringLiteral("a list");
        case Map:
            return QStringLiteral("a map");
        }
        return {};
    }
};

// Builds the tree from the events of the JSON reader, and notes where each value stands.
class JsonBuilder : public rapidjson::BaseReaderHandler<rapidjson::UTF8<>, JsonBuilder>
{
public:
    using Data = JsonNode::Data;

    JsonBuilder(const QByteArray &text, const QString &file, const rapidjson::MemoryStream &stream)
        : m_text(text), m_file(file), m_stream(stream)
    {
    }

    [[nodiscard]] int lineAt(std::size_t offset)
    {
        for (; m_counted < offset && m_counted < std::size_t(m_text.size()); ++m_counted)
            m_line += m_text[qsizetype(m_counted)] == '\n';
        return m_line;
    }
    [[nodiscard]] std::shared_ptr<Data> root() const { return m_root; }

    bool Null() { return add(Data::Null, {}); }
    bool Bool(bool value) { return add(Data::Boolean, value); }
    // As it stands: it is converted where it is asked for.
    bool RawNumber(const char *text, rapidjson::SizeType size, bool)
    {
        return add(Data::Number, QString::fromLatin1(text, qsizetype(size)));
    }
    bool String(const char *text, rapidjson::SizeType size, bool)
    {
        return add(Data::Text, QString::fromUtf8(text, qsizetype(size)));
    }
    bool Key(const char *text, rapidjson::SizeType size, bool)
    {
        m_key = QString::fromUtf8(text, qsizetype(size));
        const Data &map = *m_open.back();
        for (const auto &[name, member] : map.members) {
            if (name == m_key) {
                throw Error(m_file + u':' + QString::number(lineAt(m_stream.Tell())) + QLatin1String(": ")
                    + member->path + QLatin1String(": stands twice, first in line ")
                    + QString::number(member->line));
            }
        }
        return true;
    }
    bool StartObject() { return open(Data::Map); }
    bool StartArray() { return open(Data::List); }
    bool EndObject(rapidjson::SizeType) { return close(); }
    bool EndArray(rapidjson::SizeType) { return close(); }

private:
    bool add(Data::Kind kind, const QVariant &value)
    {
        auto data = std::make_shared<Data>();
        data->kind = kind;
        data->value = value;
        data->file = m_file;
        data->line = lineAt(m_stream.Tell());
        if (m_open.empty()) {
            m_root = data;
        } else if (Data &parent = *m_open.back(); parent.kind == Data::Map) {
            data->path = parent.path.isEmpty() ? m_key : QString(parent.path + u'.' + m_key);
            parent.members.emplace_back(m_key, data);
        } else {
            data->path = parent.path + u'[' + QString::number(parent.elements.size()) + u']';
            parent.elements.push_back(data);
        }
        m_last = data;
        return true;
    }
    bool open(Data::Kind kind)
    {
        add(kind, {});
        m_open.push_back(m_last);
        return m_open.size() < 64;
    }
    bool close()
    {
        m_open.pop_back();
        return true;
    }

    const QByteArray &m_text;
    QString m_file;
    const rapidjson::MemoryStream &m_stream;
    std::size_t m_counted = 0;
    int m_line = 1;
    QString m_key;
    std::vector<std::shared_ptr<Data>> m_open;
    std::shared_ptr<Data> m_last;
    std::shared_ptr<Data> m_root;
};

JsonNode JsonNode::parseFile(const QString &file)
{
    QFile input(file);
    if (!input.open(QIODevice::ReadOnly))
        throw Error(file + QLatin1String(": ") + input.errorString());
    return parse(input.readAll(), file);
}

JsonNode JsonNode::parse(const QByteArray &text, const QString &file)
{
    constexpr unsigned flags = rapidjson::kParseCommentsFlag | rapidjson::kParseValidateEncodingFlag
        | rapidjson::kParseNumbersAsStringsFlag;
    rapidjson::MemoryStream stream(text.constData(), std::size_t(text.size()));
    JsonBuilder builder(text, file, stream);
    rapidjson::Reader reader;
    const rapidjson::ParseResult result = reader.Parse<flags>(stream, builder);
    if (result.IsError()) {
        throw Error(file + u':' + QString::number(builder.lineAt(result.Offset())) + QLatin1String(": ")
            + QLatin1String(rapidjson::GetParseError_En(result.Code())));
    }
    JsonNode node(builder.root());
    node.expectMap();
    return node;
}

JsonNode JsonNode::emptyMap()
{
    return JsonNode(std::make_shared<Data>());
}

void JsonNode::failAt(const Data &data, const QString &reason)
{
    throw Error(data.file + u':' + QString::number(data.line) + QLatin1String(": ")
        + (data.path.isEmpty() ? QString() : QString(data.path + QLatin1String(": "))) + reason);
}

void JsonNode::fail(const QString &reason, const QString &key) const
{
    const auto member = key.isEmpty() ? nullptr : find(key);
    failAt(member ? *member : *d, reason);
}

std::shared_ptr<JsonNode::Data> JsonNode::find(const QString &key) const
{
    for (const auto &[name, member] : d->members) {
        if (name == key)
            return member;
    }
    return nullptr;
}

void JsonNode::expectMap() const
{
    if (d->kind != Data::Map)
        failAt(*d, QLatin1String("expected a map, found ") + d->description());
}

JsonNode JsonNode::map(const QString &key) const
{
    const auto member = find(key);
    if (!member)
        return emptyMap();
    JsonNode node(member);
    node.expectMap();
    return node;
}

std::vector<JsonNode> JsonNode::list(const QString &key) const
{
    const auto member = find(key);
    if (!member)
        return {};
    if (member->kind != Data::List)
        failAt(*member, QLatin1String("expected a list, found ") + member->description());
    std::vector<JsonNode> nodes;
    for (const auto &element : member->elements)
        nodes.push_back(JsonNode(element));
    return nodes;
}

std::vector<JsonNode> JsonNode::maps(const QString &key) const
{
    std::vector<JsonNode> nodes = list(key);
    for (const JsonNode &node : nodes)
        node.expectMap();
    return nodes;
}

std::vector<std::pair<QString, JsonNode>> JsonNode::members() const
{
    std::vector<std::pair<QString, JsonNode>> nodes;
    for (const auto &[name, member] : d->members)
        nodes.emplace_back(name, JsonNode(member));
    return nodes;
}

bool JsonNode::boolean(const QString &key, bool fallback) const
{
    const auto member = find(key);
    if (!member)
        return fallback;
    if (member->kind != Data::Boolean)
        failAt(*member, QLatin1String("expected true or false, found ") + member->description());
    return member->value.toBool();
}

double JsonNode::number(const QString &key, double fallback, double least, double most) const
{
    const auto member = find(key);
    if (!member)
        return fallback;
    const double value = member->value.toDouble();
    if (member->kind != Data::Number || value < least || value > most) {
        failAt(*member,
            QLatin1String("expected a number from ") + QString::number(least) + QLatin1String(" to ")
                + QString::number(most) + QLatin1String(", found ") + member->description());
    }
    return value;
}

int JsonNode::integer(const QString &key, int fallback, int least, int most) const
{
    const auto member = find(key);
    if (!member)
        return fallback;
    const double value = member->value.toDouble();
    if (member->kind != Data::Number || value < least || value > most || value != double(int(value))) {
        failAt(*member,
            QLatin1String("expected a whole number from ") + QString::number(least) + QLatin1String(" to ")
                + QString::number(most) + QLatin1String(", found ") + member->description());
    }
    return int(value);
}

std::chrono::milliseconds JsonNode::seconds(
    const QString &key, double fallback, double least, double most) const
{
    return std::chrono::milliseconds(qRound(number(key, fallback, least, most) * 1000));
}

QString JsonNode::hardwareAddress(const QString &key, const QString &fallback) const
{
    QString address = text(key, fallback);
    static const QRegularExpression form(QStringLiteral("^([0-9A-Fa-f]{2}:){5}[0-9A-Fa-f]{2}$"));
    if (!form.match(address).hasMatch()) {
        fail(QLatin1String("expected a hardware address such as \"02:00:00:00:00:01\", found \"") + address
                + u'"',
            key);
    }
    return address;
}

QString JsonNode::text(const QString &key, const QString &fallback) const
{
    const auto member = find(key);
    if (!member)
        return fallback;
    if (member->kind != Data::Text)
        failAt(*member, QLatin1String("expected text, found ") + member->description());
    return member->value.toString();
}

QString JsonNode::word(const QString &key, const QString &fallback, const QStringList &words) const
{
    QString value = text(key, fallback);
    if (!words.contains(value)) {
        fail(QLatin1String("expected one of ") + words.join(QLatin1String(", ")) + QLatin1String(", found \"")
                + value + u'"',
            key);
    }
    return value;
}

QStringList JsonNode::texts(const QString &key, const QStringList &fallback) const
{
    if (!find(key))
        return fallback;
    QStringList values;
    for (const JsonNode &element : list(key)) {
        if (element.d->kind != Data::Text)
            failAt(*element.d, QLatin1String("expected text, found ") + element.d->description());
        values.append(element.d->value.toString());
    }
    return values;
}

QStringList JsonNode::words(const QString &key, const QStringList &fallback, const QStringList &words) const
{
    QStringList values = texts(key, fallback);
    for (qsizetype i = 0; i < values.size(); ++i) {
        if (!words.contains(values[i])) {
            failAt(*find(key)->elements[std::size_t(i)],
                QLatin1String("expected one of ") + words.join(QLatin1String(", "))
                    + QLatin1String(", found \"") + values[i] + u'"');
        }
    }
    return values;
}

QList<int> JsonNode::integers(const QString &key, const QList<int> &fallback, const QList<int> &numbers) const
{
    if (!find(key))
        return fallback;
    QList<int> values;
    for (const JsonNode &element : list(key)) {
        const double number = element.d->value.toDouble();
        const auto found = std::find(numbers.begin(), numbers.end(), number);
        if (element.d->kind != Data::Number || found == numbers.end()) {
            QStringList texts;
            for (const int known : numbers)
                texts.append(QString::number(known));
            failAt(*element.d,
                QLatin1String("expected one of ") + texts.join(QLatin1String(", "))
                    + QLatin1String(", found ") + element.d->description());
        }
        values.append(*found);
    }
    return values;
}

std::optional<QString> JsonNode::identifier(const QString &key, const QString &fallback) const
{
    const auto member = find(key);
    if (!member)
        return fallback;
    if (member->kind == Data::Null)
        return std::nullopt;
    if (member->kind != Data::Text)
        failAt(*member, QStringLiteral("expected text or null"));
    return member->value.toString();
}

bool JsonNode::contains(const QString &key) const
{
    return find(key) != nullptr;
}

bool JsonNode::isNull(const QString &key) const
{
    const auto member = find(key);
    return member && member->kind == Data::Null;
}

void JsonNode::allowOnly(const QStringList &known) const
{
    for (const auto &[name, member] : d->members) {
        if (!known.contains(name))
            failAt(*member, QLatin1String("unknown key; known here are ") + known.join(QLatin1String(", ")));
    }
}

} // namespace oz::services
