#include "phone/JsonNode.hpp"

#include "source/Error.hpp"

#include <QCryptographicHash>
#include <QFile>

#include <algorithm>

namespace oz::services {

namespace {

QVariant contentOf(const JsonValue &value)
{
    switch (value.kind) {
    case JsonValue::Null:
        return QVariant::fromValue(nullptr); // messages have no form for an invalid value in a list
    case JsonValue::Truth:
        return value.truth;
    case JsonValue::Number:
        return value.number;
    case JsonValue::Text:
        return value.text;
    case JsonValue::List: {
        QVariantList list;
        for (const auto &[name, element] : value.members)
            list.append(contentOf(element));
        return list;
    }
    case JsonValue::Map: {
        QVariantMap map;
        for (const auto &[name, member] : value.members)
            map.insert(name, contentOf(member));
        return map;
    }
    }
    Q_UNREACHABLE();
}

} // namespace

JsonNode JsonNode::parseFile(const QString &file)
{
    QFile input(file);
    if (!input.open(QIODevice::ReadOnly))
        throw Error(file + QLatin1String(": ") + input.errorString());
    return parse(input.readAll(), file);
}

JsonNode JsonNode::parse(const QByteArray &text, const QString &file)
{
    auto document = std::make_shared<const JsonDocument>(JsonDocument::parse(text, file));
    const JsonValue *root = &document->root;
    const JsonNode node(std::move(document), root, {});
    node.expectMap();
    return node;
}

JsonNode JsonNode::emptyMap()
{
    auto document = std::make_shared<const JsonDocument>();
    const JsonValue *root = &document->root;
    return {std::move(document), root, {}};
}

QString JsonNode::fingerprint() const
{
    return QString::fromLatin1(
        QCryptographicHash::hash(m_document->text, QCryptographicHash::Sha256).toHex());
}

QString JsonNode::description() const
{
    switch (m_value->kind) {
    case JsonValue::Null:
        return QStringLiteral("null");
    case JsonValue::Truth:
        return m_value->truth ? QStringLiteral("true") : QStringLiteral("false");
    case JsonValue::Number:
        return m_value->text;
    case JsonValue::Text:
        return u'"' + m_value->text + u'"';
    case JsonValue::List:
        return QStringLiteral("a list");
    case JsonValue::Map:
        return QStringLiteral("a map");
    }
    Q_UNREACHABLE();
}

void JsonNode::failHere(const QString &reason) const
{
    throw Error(m_document->file + u':' + QString::number(line()) + QLatin1String(": ")
        + (m_path.isEmpty() ? QString() : QString(m_path + QLatin1String(": "))) + reason);
}

void JsonNode::fail(const QString &reason, const QString &key) const
{
    const auto member = key.isEmpty() ? std::nullopt : find(key);
    (member ? *member : *this).failHere(reason);
}

std::optional<JsonNode> JsonNode::find(const QString &key) const
{
    const auto &members = m_value->members;
    const auto member =
        std::find_if(members.begin(), members.end(), [&](const auto &each) { return each.first == key; });
    if (!isMap() || member == members.end())
        return std::nullopt;
    return JsonNode(m_document, &member->second, m_path.isEmpty() ? key : QString(m_path + u'.' + key));
}

void JsonNode::expectMap() const
{
    if (!isMap())
        failHere(QLatin1String("expected a map, found ") + description());
}

JsonNode JsonNode::map(const QString &key) const
{
    const auto member = find(key);
    if (!member)
        return emptyMap();
    member->expectMap();
    return *member;
}

std::vector<JsonNode> JsonNode::list(const QString &key) const
{
    const auto member = find(key);
    return member ? member->elements() : std::vector<JsonNode>();
}

std::vector<JsonNode> JsonNode::elements() const
{
    std::vector<JsonNode> nodes;
    if (!isList())
        failHere(QLatin1String("expected a list, found ") + description());
    for (const auto &[name, element] : m_value->members)
        nodes.push_back({m_document, &element, m_path + u'[' + QString::number(nodes.size()) + u']'});
    return nodes;
}

std::optional<QString> JsonNode::asText() const
{
    return m_value->kind == JsonValue::Text ? std::optional(m_value->text) : std::nullopt;
}

QVariant JsonNode::asScalar() const
{
    const QVariant value = asVariant();
    if (!value.isValid() || value.typeId() == QMetaType::QVariantMap)
        failHere(QLatin1String("expected text, a number, or true or false, found ") + description());
    return value;
}

QVariant JsonNode::content() const
{
    return contentOf(*m_value);
}

bool JsonNode::isMap() const
{
    return m_value->kind == JsonValue::Map;
}

bool JsonNode::isList() const
{
    return m_value->kind == JsonValue::List;
}

JsonNode JsonNode::at(const QString &key) const
{
    const auto member = find(key);
    if (!member)
        failHere(QLatin1String("there is no '") + key + QLatin1String("', which is needed here"));
    return *member;
}

QString JsonNode::file() const
{
    return m_document->file;
}

int JsonNode::line() const
{
    return m_value->line;
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
    for (const auto &[name, value] : m_value->members)
        nodes.emplace_back(name, at(name));
    return nodes;
}

// A map is no value of its own.
QVariant JsonNode::asVariant() const
{
    if (m_value->kind == JsonValue::Null)
        return {};
    return isMap() || isList() ? QVariant(QVariantMap()) : contentOf(*m_value);
}

QVariant JsonNode::acceptedBy(const ValueType &type) const
{
    const auto value = type.accept(asVariant());
    if (!value) {
        failHere(QLatin1String("expected ") + type.expected()
            + (type.isPrivate ? QString() : QString(QLatin1String(", found ") + description())));
    }
    return *value;
}

QVariant JsonNode::value(const QString &key, const ValueType &type) const
{
    const JsonNode member = at(key);
    if (type.kind != ValueType::List)
        return member.acceptedBy(type);
    ValueType one = type;
    one.kind = type.words.isEmpty() ? ValueType::Text : ValueType::Word;
    QStringList all;
    for (const JsonNode &element : member.elements())
        all.append(element.acceptedBy(one).toString());
    return all;
}

double JsonNode::number(const QString &key, double fallback, double least, double most) const
{
    ValueType type{ValueType::Number};
    type.least = least;
    type.most = most;
    return contains(key) ? value(key, type).toDouble() : fallback;
}

int JsonNode::integer(const QString &key, int fallback, int least, int most) const
{
    ValueType type{ValueType::Number};
    type.isWhole = true;
    type.least = least;
    type.most = most;
    return contains(key) ? value(key, type).toInt() : fallback;
}

QString JsonNode::text(const QString &key, const QString &fallback) const
{
    return contains(key) ? value(key, {ValueType::Text}).toString() : fallback;
}

QString JsonNode::word(const QString &key, const QString &fallback, const QStringList &words) const
{
    return contains(key) ? value(key, {ValueType::Word, {}, words}).toString() : fallback;
}

QList<int> JsonNode::integers(const QString &key, const QList<int> &fallback, const QList<int> &numbers) const
{
    if (!find(key))
        return fallback;
    QList<int> values;
    for (const JsonNode &element : list(key)) {
        const double number = element.m_value->kind == JsonValue::Number ? element.m_value->number : 0.5;
        const auto found = std::find(numbers.begin(), numbers.end(), number);
        if (found == numbers.end()) {
            QStringList texts;
            for (const int known : numbers)
                texts.append(QString::number(known));
            element.failHere(QLatin1String("expected one of ") + texts.join(QLatin1String(", "))
                + QLatin1String(", found ") + element.description());
        }
        values.append(*found);
    }
    return values;
}

bool JsonNode::contains(const QString &key) const
{
    return find(key).has_value();
}

void JsonNode::allowOnly(const QStringList &known) const
{
    for (const auto &[name, member] : members()) {
        if (!known.contains(name))
            member.failHere(QLatin1String("unknown key; known here are ") + known.join(QLatin1String(", ")));
    }
}

} // namespace oz::services
