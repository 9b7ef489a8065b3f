#include "phone/JsonNode.hpp"

#include "source/Error.hpp"

#include <QCryptographicHash>
#include <QFile>
#include <QRegularExpression>
#include <QStringDecoder>

#include <algorithm>
#include <json/json.h>

namespace oz::services {

struct JsonNode::Document
{
    QString file;
    QByteArray text;
    Json::Value root{Json::objectValue};

    [[nodiscard]] int lineAt(std::ptrdiff_t offset) const
    {
        return 1
            + int(
                std::count(text.begin(), text.begin() + std::clamp<qsizetype>(offset, 0, text.size()), '\n'));
    }
};

namespace {

QString textFrom(const std::string &text)
{
    return QString::fromUtf8(text.data(), qsizetype(text.size()));
}

// "* Line 3, Column 5\n  Missing ',' or '}'\n", and more of the kind.
Error syntaxError(const QString &file, const QString &errors)
{
    static const QRegularExpression first(QStringLiteral("Line (\\d+), Column (\\d+)\\s+([^\\n]*)"));
    const auto match = first.match(errors);
    return Error(file + u':' + match.captured(1) + QLatin1String(": ")
        + (match.hasMatch() ? match.captured(3) : errors.simplified()));
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
    auto document = std::make_shared<Document>();
    document->file = file;
    document->text = text;
    QStringDecoder decoder(QStringDecoder::Utf8);
    if (const QString decoded = decoder(text); decoder.hasError() && !decoded.isNull())
        throw Error(file + QLatin1String(":1: the file is not UTF-8"));
    Json::CharReaderBuilder builder;
    Json::CharReaderBuilder::strictMode(&builder.settings_);
    builder["allowComments"] = true;
    std::string errors;
    const std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
    try {
        if (!reader->parse(text.constData(), text.constData() + text.size(), &document->root, &errors))
            throw syntaxError(file, QString::fromStdString(errors));
    } catch (const Json::Exception &exception) { // nesting that is too deep
        throw Error(file + QLatin1String(": ") + QString::fromUtf8(exception.what()));
    }
    const Json::Value *root = &document->root;
    const JsonNode node(std::move(document), root, {});
    node.expectMap();
    return node;
}

JsonNode JsonNode::emptyMap()
{
    auto document = std::make_shared<Document>();
    const Json::Value *root = &document->root;
    return {std::move(document), root, {}};
}

QString JsonNode::fingerprint() const
{
    return QString::fromLatin1(
        QCryptographicHash::hash(m_document->text, QCryptographicHash::Sha256).toHex());
}

QString JsonNode::description() const
{
    switch (m_value->type()) {
    case Json::nullValue:
        return QStringLiteral("null");
    case Json::arrayValue:
        return QStringLiteral("a list");
    case Json::objectValue:
        return QStringLiteral("a map");
    case Json::stringValue:
        return u'"' + *textOf() + u'"';
    default:
        return QString::fromUtf8(m_document->text.mid(
            m_value->getOffsetStart(), m_value->getOffsetLimit() - m_value->getOffsetStart()));
    }
}

std::optional<QString> JsonNode::textOf() const
{
    return m_value->isString() ? std::optional(textFrom(m_value->asString())) : std::nullopt;
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
    const QByteArray name = key.toUtf8();
    const Json::Value *member = m_value->find(name.begin(), name.end());
    if (!member)
        return std::nullopt;
    return JsonNode(m_document, member, m_path.isEmpty() ? key : QString(m_path + u'.' + key));
}

void JsonNode::expectMap() const
{
    if (!m_value->isObject())
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
    for (const Json::Value &element : *m_value)
        nodes.push_back({m_document, &element, m_path + u'[' + QString::number(nodes.size()) + u']'});
    return nodes;
}

std::optional<QString> JsonNode::asText() const
{
    return textOf();
}

QVariant JsonNode::asScalar() const
{
    if (m_value->isBool())
        return m_value->asBool();
    if (m_value->isNumeric())
        return m_value->asDouble();
    if (!m_value->isString())
        failHere(QLatin1String("expected text, a number, or true or false, found ") + description());
    return *textOf();
}

bool JsonNode::isMap() const
{
    return m_value->isObject();
}

bool JsonNode::isList() const
{
    return m_value->isArray();
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
    return m_document->lineAt(m_value->getOffsetStart());
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
    for (const std::string &name : m_value->getMemberNames())
        nodes.emplace_back(textFrom(name), *find(textFrom(name)));
    // In the order of the file, which the library does not keep.
    std::sort(nodes.begin(), nodes.end(), [](const auto &one, const auto &other) {
        return one.second.m_value->getOffsetStart() < other.second.m_value->getOffsetStart();
    });
    return nodes;
}

// A map is no value of its own.
QVariant JsonNode::asVariant() const
{
    switch (m_value->type()) {
    case Json::booleanValue:
        return m_value->asBool();
    case Json::intValue:
    case Json::uintValue:
    case Json::realValue:
        return m_value->asDouble();
    case Json::stringValue:
        return *textOf();
    case Json::nullValue:
        return {};
    default:
        return QVariantMap();
    }
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

bool JsonNode::boolean(const QString &key, bool fallback) const
{
    const auto member = find(key);
    if (member && !member->m_value->isBool())
        member->failHere(QLatin1String("expected true or false, found ") + member->description());
    return member ? member->m_value->asBool() : fallback;
}

double JsonNode::number(const QString &key, double fallback, double least, double most) const
{
    const auto member = find(key);
    if (!member)
        return fallback;
    const bool isNumber = member->m_value->isNumeric() && !member->m_value->isBool();
    const double value = isNumber ? member->m_value->asDouble() : 0;
    if (!isNumber || value < least || value > most) {
        member->failHere(QLatin1String("expected a number from ") + QString::number(least)
            + QLatin1String(" to ") + QString::number(most) + QLatin1String(", found ")
            + member->description());
    }
    return value;
}

int JsonNode::integer(const QString &key, int fallback, int least, int most) const
{
    const auto member = find(key);
    if (!member)
        return fallback;
    const bool isNumber = member->m_value->isNumeric() && !member->m_value->isBool();
    const double value = isNumber ? member->m_value->asDouble() : 0;
    if (!isNumber || value < least || value > most || value != double(int(value))) {
        member->failHere(QLatin1String("expected a whole number from ") + QString::number(least)
            + QLatin1String(" to ") + QString::number(most) + QLatin1String(", found ")
            + member->description());
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
    if (!member->m_value->isString())
        member->failHere(QLatin1String("expected text, found ") + member->description());
    return *member->textOf();
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

QStringList JsonNode::words(const QString &key, const QStringList &fallback, const QStringList &words) const
{
    if (!find(key))
        return fallback;
    QStringList values;
    for (const JsonNode &element : list(key)) {
        const auto value = element.textOf();
        if (!value)
            element.failHere(QLatin1String("expected text, found ") + element.description());
        if (!words.contains(*value)) {
            element.failHere(QLatin1String("expected one of ") + words.join(QLatin1String(", "))
                + QLatin1String(", found \"") + *value + u'"');
        }
        values.append(*value);
    }
    return values;
}

QList<int> JsonNode::integers(const QString &key, const QList<int> &fallback, const QList<int> &numbers) const
{
    if (!find(key))
        return fallback;
    QList<int> values;
    for (const JsonNode &element : list(key)) {
        const double number = element.m_value->isNumeric() ? element.m_value->asDouble() : 0.5;
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

std::optional<QString> JsonNode::identifier(const QString &key, const QString &fallback) const
{
    const auto member = find(key);
    if (!member)
        return fallback;
    if (member->m_value->isNull())
        return std::nullopt;
    if (!member->m_value->isString())
        member->failHere(QStringLiteral("expected text or null"));
    return member->textOf();
}

bool JsonNode::contains(const QString &key) const
{
    return find(key).has_value();
}

bool JsonNode::isNull(const QString &key) const
{
    const auto member = find(key);
    return member && member->m_value->isNull();
}

void JsonNode::allowOnly(const QStringList &known) const
{
    for (const auto &[name, member] : members()) {
        if (!known.contains(name))
            member.failHere(QLatin1String("unknown key; known here are ") + known.join(QLatin1String(", ")));
    }
}

} // namespace oz::services
