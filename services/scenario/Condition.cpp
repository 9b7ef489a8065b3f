#include "scenario/Condition.hpp"

#include "source/Error.hpp"

#include <QRegularExpression>

namespace oz::services {

namespace {

const QStringList Comparisons{QStringLiteral("=="), QStringLiteral("!="), QStringLiteral("<"),
    QStringLiteral("<="), QStringLiteral(">"), QStringLiteral(">="), QStringLiteral("contains")};

QString shownValue(const QVariant &value)
{
    if (!value.isValid())
        return QStringLiteral("unknown");
    if (value.canConvert<QStringList>() && value.typeId() != QMetaType::QString)
        return u'[' + value.toStringList().join(QLatin1String(", ")) + u']';
    return value.toString();
}

bool compare(const QVariant &left, const QString &comparison, const QVariant &right)
{
    if (comparison == u"==" || comparison == u"!=") {
        bool areNumbers = false;
        const double number = left.toDouble(&areNumbers);
        bool equal = !left.isValid() && !right.isValid();
        if (left.isValid() && right.isValid())
            equal = areNumbers && right.typeId() == QMetaType::Double ? number == right.toDouble()
                                                                      : left == right;
        return equal == (comparison == u"==");
    }
    if (!left.isValid() || !right.isValid())
        return false;
    if (comparison == u"contains") {
        return left.typeId() == QMetaType::QString ? left.toString().contains(right.toString())
                                                   : left.toStringList().contains(right.toString());
    }
    const double one = left.toDouble();
    const double other = right.toDouble();
    return comparison == u"<" ? one < other
        : comparison == u"<=" ? one <= other
        : comparison == u">"  ? one > other
                              : one >= other;
}

} // namespace

// Recursive descent; each level gives what is to be evaluated later.
class Condition::Parser
{
public:
    Parser(const QString &text, const Names &names) : m_names(names)
    {
        static const QRegularExpression token(QStringLiteral(
            R"(\s*(?:(\(|\)|==|!=|<=|>=|<|>)|'([^']*)'|(-?[0-9.]+(?![\w.-]))|([\w*][\w.*+:-]*)|(\S)))"));
        auto matches = token.globalMatch(text.trimmed());
        while (matches.hasNext()) {
            const auto match = matches.next();
            for (int kind = Symbol; kind <= Strange; ++kind) {
                if (match.hasCaptured(kind))
                    m_tokens.append({Kind(kind), match.captured(kind)});
            }
        }
        for (const Token &each : m_tokens) {
            if (each.kind == Strange)
                throw Error(QLatin1String("'") + each.text + QLatin1String("' means nothing in a condition"));
        }
    }

    [[nodiscard]] Condition parse()
    {
        m_condition.m_holds = either();
        if (m_place < m_tokens.size())
            fail(QStringLiteral("'and', 'or' or the end"));
        return m_condition;
    }

private:
    enum Kind { Symbol = 1, Quoted, Number, Word, Strange };
    struct Token
    {
        Kind kind;
        QString text;
    };
    struct Operand
    {
        QString text;
        std::function<QVariant()> value;
        std::optional<Name> name; // of one that is no literal
        bool isUnknown = false;
    };
    using Holds = std::function<bool()>;

    [[noreturn]] void fail(const QString &expected) const
    {
        throw Error(QLatin1String("expected ") + expected
            + (m_place < m_tokens.size() ? QLatin1String(", found '") + m_tokens[m_place].text + u'\''
                                         : QStringLiteral(", found the end")));
    }
    bool consume(Kind kind, QStringView text)
    {
        if (m_place == m_tokens.size() || m_tokens[m_place].kind != kind || m_tokens[m_place].text != text)
            return false;
        ++m_place;
        return true;
    }

    Holds either()
    {
        Holds left = both();
        while (consume(Word, u"or"))
            left = [left, right = both()] { return left() || right(); };
        return left;
    }
    Holds both()
    {
        Holds left = one();
        while (consume(Word, u"and"))
            left = [left, right = one()] { return left() && right(); };
        return left;
    }
    Holds one()
    {
        // As deep as anybody writes by hand, so that no file exhausts the stack.
        if (++m_depth > 50)
            throw Error(QStringLiteral("the condition is nested too deeply"));
        Holds holds;
        if (consume(Word, u"not")) {
            holds = [inner = one()] { return !inner(); };
        } else if (consume(Symbol, u"(")) {
            holds = either();
            if (!consume(Symbol, u")"))
                fail(QStringLiteral("')'"));
        } else {
            holds = comparison();
        }
        --m_depth;
        return holds;
    }

    Holds comparison()
    {
        const Operand left = operand();
        const bool isCompared = m_place < m_tokens.size() && Comparisons.contains(m_tokens[m_place].text);
        if (!isCompared) {
            if (!left.name || left.name->type != ValueType::Truth) {
                fail(QLatin1String("a comparison of ") + left.text + QLatin1String(" (")
                    + Comparisons.join(u' ') + u')');
            }
            return [value = left.value] { return value().toBool(); };
        }
        const QString comparison = m_tokens[m_place++].text;
        Operand right = operand();
        if (!left.name)
            throw Error(QLatin1String("expected a name on the left of ") + comparison
                + QLatin1String(", found '") + left.text + u'\'');
        check(left, comparison, right);
        // A word that looks like a number is text where it is compared with text: "001".
        if (!right.name && !right.isUnknown && left.name->type != ValueType::Number
            && left.name->type != ValueType::Truth)
            right.value = [text = right.text] { return text; };
        return [one = left.value, other = right.value, comparison] {
            return compare(one(), comparison, other());
        };
    }

    // True if the operator can compare the two.
    static void check(const Operand &left, const QString &comparison, const Operand &right)
    {
        const auto expect = [&](bool isSo, const QString &expected) {
            if (!isSo) {
                throw Error(left.text + QLatin1String(" is ") + expected + QLatin1String("; it cannot be ")
                    + comparison + u' ' + right.text);
            }
        };
        const bool isEquality = comparison == u"==" || comparison == u"!=";
        if (right.isUnknown)
            return expect(isEquality, QStringLiteral("or is not 'unknown'"));
        const auto isOf = [&](ValueType::Kind type, int meta) {
            return right.name ? right.name->type == type : right.value().typeId() == meta;
        };
        switch (left.name->type) {
        case ValueType::Number:
            return expect(comparison != u"contains" && isOf(ValueType::Number, QMetaType::Double),
                QStringLiteral("a number"));
        case ValueType::Truth:
            return expect(
                isEquality && isOf(ValueType::Truth, QMetaType::Bool), QStringLiteral("true or false"));
        case ValueType::Word:
            return expect(isEquality
                    && (right.name ? right.name->type == ValueType::Word
                                   : left.name->words.contains(right.text)),
                QLatin1String("one of ") + left.name->words.join(QLatin1String(", ")));
        case ValueType::Text:
            return expect((isEquality || comparison == u"contains")
                    && (isOf(ValueType::Text, QMetaType::QString) || !right.name),
                QStringLiteral("text"));
        case ValueType::List:
            return expect(
                comparison == u"contains", QStringLiteral("a list, which 'contains' a word or does not"));
        }
    }

    Operand operand()
    {
        if (m_place == m_tokens.size() || m_tokens[m_place].kind == Symbol)
            fail(QStringLiteral("a name or a value"));
        const Token token = m_tokens[m_place++];
        const auto literal = [&](const QVariant &value) {
            return Operand{token.text, [value] { return value; }, std::nullopt};
        };
        if (token.kind == Quoted)
            return literal(token.text);
        if (token.kind == Number) {
            bool ok = false;
            const double number = token.text.toDouble(&ok);
            if (!ok)
                throw Error(u'\'' + token.text + QLatin1String("' is no number"));
            return literal(number);
        }
        if (token.text == u"true" || token.text == u"false")
            return literal(token.text == u"true");
        if (token.text == u"unknown") {
            Operand unknown = literal(QVariant());
            unknown.isUnknown = true;
            return unknown;
        }
        const auto name = m_names(token.text);
        if (!name)
            return literal(token.text);
        m_condition.m_names.append({token.text, name->now});
        return {token.text, name->now, name};
    }

    const Names &m_names;
    QList<Token> m_tokens;
    qsizetype m_place = 0;
    int m_depth = 0;
    Condition m_condition;
};

Condition Condition::parse(const QString &text, const Names &names)
{
    return Parser(text, names).parse();
}

std::optional<Condition::Name> Condition::valueOfTree(const QString &word, const Tree &tree)
{
    // Words that values can be have no dot.
    if (!word.contains(u'.'))
        return std::nullopt;
    const PublicValueUse use = publicValueNamed(word);
    return Name{use.field->type.kind, use.field->type.words, [use, &tree] { return use.now(tree); }};
}

Condition::Names Condition::fieldsOf(const AskedRequest &request, const std::shared_ptr<QVariantMap> &fields)
{
    return [&request, fields](const QString &word) -> std::optional<Name> {
        for (const AskedRequest::Part &field : request.parts) {
            if (field.name == word)
                return Name{
                    field.type.kind, field.type.words, [fields, word] { return fields->value(word); }};
        }
        return std::nullopt;
    };
}

std::function<bool(const QVariantMap &fields)> Condition::overRequest(
    const QString &text, const AskedRequest &request)
{
    const auto fields = std::make_shared<QVariantMap>();
    return [fields, condition = parse(text, fieldsOf(request, fields))](const QVariantMap &asked) {
        *fields = asked;
        return condition.holds();
    };
}

QString Condition::valuesText() const
{
    QStringList texts;
    for (const auto &[name, now] : m_names)
        texts.append(name + QLatin1String(" is ") + shownValue(now()));
    texts.removeDuplicates();
    return texts.join(QLatin1String(", "));
}

} // namespace oz::services
