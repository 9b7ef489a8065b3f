#include "scenario/Scenario.hpp"

#include "phone/SimVerb.hpp"

#include <QDir>
#include <QFileInfo>
#include <QProcess>
#include <QRegularExpression>

#include <cmath>
#include <limits>

namespace oz::services {

namespace {

using Time = ScenarioStep::Time;

constexpr double LongestTime = 31'536'000; // seconds: a year
constexpr int DeepestSteps = 20;
constexpr double DefaultWithin = 10; // seconds, of an expectation

const QString At = QStringLiteral("at");
const QString Steps = QStringLiteral("steps");
const QString Variables = QStringLiteral("variables");

// Each kind of step: the key that makes it one, and the others that it takes.
struct Form
{
    ScenarioStep::Kind kind;
    const char *key;
    const char *others;
};

constexpr Form Forms[] = {
    {ScenarioStep::Tell, "sim", ""},
    {ScenarioStep::Say, "say", ""},
    {ScenarioStep::Wait, "wait", "jitter"},
    {ScenarioStep::When, "when", "within"},
    {ScenarioStep::Expect, "expect", "within throughout name"},
    {ScenarioStep::ExpectRequest, "expect-request", "with times within name"},
    {ScenarioStep::Ramp, "ramp", "from to in every decimals jitter"},
    {ScenarioStep::Repeat, "repeat", "counter while steps"},
    {ScenarioStep::ForEach, "for-each", "steps"},
    {ScenarioStep::Together, "together", ""},
    {ScenarioStep::Include, "include", "with"},
};

QString textOf(const QVariant &value)
{
    return value.typeId() == QMetaType::Double ? QString::number(value.toDouble(), 'g', 15)
                                               : value.toString();
}

QString secondsText(Time time)
{
    return QString::number(double(time.count()) / 1000, 'g', 10) + QLatin1String(" s");
}

Time timeOf(double seconds)
{
    return Time(qRound64(seconds * 1000));
}

bool isName(const QString &text)
{
    static const QRegularExpression form(QStringLiteral("^[A-Za-z][A-Za-z0-9_-]*$"));
    return form.match(text).hasMatch();
}

} // namespace

QString ScenarioStep::place() const
{
    return node.file() + u':' + QString::number(node.line());
}

QString ScenarioStep::rampText(double value) const
{
    const double scale = std::pow(10, ramp.decimals);
    return QString::number(std::round(value * scale) / scale + 0.0, 'f', ramp.decimals);
}

// The members of a step, with the variables put in.
class Scenario::Reader
{
public:
    Reader(const JsonNode &node, const ScenarioVariables &variables)
        : m_node(node), m_variables(variables) { }

    [[nodiscard]] const JsonNode &node() const { return m_node; }
    [[nodiscard]] const ScenarioVariables &variables() const { return m_variables; }

    [[nodiscard]] QString filled(QString text, const JsonNode &where) const
    {
        static const QRegularExpression form(QStringLiteral(R"(\$\{([^}]*)\})"));
        for (auto match = form.match(text); match.hasMatch(); match = form.match(text)) {
            const auto found = m_variables.constFind(match.captured(1));
            if (found == m_variables.cend()) {
                where.fail(QLatin1String("there is no variable '") + match.captured(1)
                    + QLatin1String("'; there is ")
                    + (m_variables.isEmpty() ? QStringLiteral("none")
                                             : m_variables.keys().join(QLatin1String(", "))));
            }
            const QString value = textOf(*found);
            if (value.contains(QLatin1String("${")))
                where.fail(QStringLiteral("a variable's value cannot hold another"));
            text.replace(match.capturedStart(), match.capturedLength(), value);
        }
        return text;
    }
    [[nodiscard]] QString text(const QString &key) const
    {
        return filled(m_node.text(key, {}), m_node.contains(key) ? m_node.at(key) : m_node);
    }
    // A number, or the name of a variable that has one.
    [[nodiscard]] double number(
        const char *name, std::optional<double> fallback, double least, double most) const
    {
        const QString key = QString::fromLatin1(name);
        if (!fallback || m_node.contains(key)) {
            const JsonNode member = m_node.at(key);
            if (const auto written = member.asText()) {
                bool ok = false;
                const double value = filled(*written, member).toDouble(&ok);
                if (!ok || !(value >= least && value <= most)) {
                    member.fail(QStringLiteral("expected a number from %1 to %2, found \"%3\"")
                                    .arg(least)
                                    .arg(most, 0, 'g', 10)
                                    .arg(filled(*written, member)));
                }
                return value;
            }
        }
        return m_node.number(key, fallback.value_or(0), least, most);
    }
    [[nodiscard]] int integer(const char *name, int fallback, int least, int most) const
    {
        const double value = number(name, fallback, least, most);
        if (value != double(int(value)))
            m_node.fail(QStringLiteral("expected a whole number"), QString::fromLatin1(name));
        return int(value);
    }
    [[nodiscard]] Time time(const char *name, std::optional<double> fallback) const
    {
        return timeOf(number(name, fallback, 0, LongestTime));
    }
    // Words of an order: text that is split at blanks, or a list of words that may have some.
    [[nodiscard]] QStringList words(const JsonNode &value) const
    {
        QStringList words;
        if (const auto text = value.asText()) {
            for (const QString &word : QProcess::splitCommand(*text))
                words.append(filled(word, value));
        } else if (value.isList()) {
            for (const JsonNode &element : value.elements())
                words.append(filled(textOf(element.asScalar()), element));
        } else {
            value.fail(
                QStringLiteral("expected an order as for `ozdevice sim`, as text or as a list of words"));
        }
        if (words.size() < 2)
            value.fail(QStringLiteral(
                "expected an order as for `ozdevice sim`: \"FACILITY [NAME] VERB [ARGUMENT...]\""));
        return words;
    }
    [[nodiscard]] Condition condition(const QString &key, const Condition::Names &names) const
    {
        const JsonNode member = m_node.at(key);
        const QString written = text(key);
        try {
            return Condition::parse(written, names);
        } catch (const Error &error) {
            member.fail(error.text());
        }
    }
    [[nodiscard]] QString variableName(const QString &key) const
    {
        QString name = m_node.text(key, {});
        if (m_node.contains(key) && !isName(name))
            m_node.fail(QStringLiteral("expected the name of a variable: letters, digits, '-' and '_'"), key);
        return name;
    }

private:
    const JsonNode &m_node;
    const ScenarioVariables &m_variables;
};

Scenario::Scenario(
    const QString &file, const ScenarioVariables &given, const Tree &tree, const CheckOrder &checkOrder)
    : m_tree(tree)
{
    const JsonNode root = JsonNode::parseFile(file);
    Included content =
        readFile(root, {QStringLiteral("description"), QStringLiteral("seed"), QStringLiteral("phone")});
    m_description = root.text(QStringLiteral("description"), {});
    m_seed = quint32(root.number(QStringLiteral("seed"), 1, 0, std::numeric_limits<quint32>::max()));
    for (auto variable = given.cbegin(); variable != given.cend(); ++variable) {
        if (!content.variables.contains(variable.key()))
            root.fail(
                QLatin1String("there is no variable '") + variable.key() + QLatin1String("' to be set"));
        content.variables.insert(variable.key(), *variable);
    }
    m_steps = content.steps;
    m_variables = content.variables;
    check(m_steps, m_variables, checkOrder);
}

Scenario::Included Scenario::readFile(const JsonNode &root, const QStringList &furtherKeys)
{
    root.allowOnly(furtherKeys + QStringList{QStringLiteral("description"), Variables, Steps});
    Included content;
    for (const auto &[name, value] : root.map(Variables).members()) {
        if (!isName(name))
            value.fail(QStringLiteral("the name of a variable is letters, digits, '-' and '_'"));
        content.variables.insert(name, value.asScalar());
    }
    content.steps = root.at(Steps).elements();
    return content;
}

ScenarioStep Scenario::step(const JsonNode &node, const ScenarioVariables &variables) const
{
    const Reader reader(node, variables);
    if (node.asText() || node.isList()) {
        ScenarioStep step{ScenarioStep::Tell, node, {}, {}};
        step.words = reader.words(node);
        step.text = step.words.join(u' ');
        return step;
    }
    if (!node.isMap())
        node.fail(QStringLiteral("expected a step: an order, as text or as a list of words, or a map"));
    const Form *form = nullptr;
    QStringList keys;
    for (const Form &each : Forms) {
        keys.append(QString::fromLatin1(each.key));
        if (!node.contains(keys.last()))
            continue;
        if (form)
            node.fail(QLatin1String("a step is one thing, not both ") + QLatin1String(form->key)
                    + QLatin1String(" and ") + keys.last(),
                keys.last());
        form = &each;
    }
    if (!form)
        node.fail(QLatin1String("expected a step with one of ") + keys.join(QLatin1String(", ")));
    const QString key = QString::fromLatin1(form->key);
    QStringList known{key, At};
    known += QString::fromLatin1(form->others).split(u' ', Qt::SkipEmptyParts);
    node.allowOnly(known);

    ScenarioStep step{form->kind, node, {}, {}};
    step.variables = variables;
    if (node.contains(At))
        step.at = reader.time("at", std::nullopt);
    const auto overTree = [this](const QString &word) { return Condition::valueOfTree(word, m_tree); };
    const auto body = [&] {
        if (!node.contains(Steps))
            node.fail(key + QLatin1String(" needs 'steps'"));
        step.bodies.push_back(node.at(Steps).elements());
    };
    switch (form->kind) {
    case ScenarioStep::Tell:
        step.words = reader.words(node.at(key));
        step.text = step.words.join(u' ');
        break;
    case ScenarioStep::Say:
        step.text = reader.text(key);
        break;
    case ScenarioStep::Wait:
        step.time = reader.time("wait", std::nullopt);
        step.jitter = reader.time("jitter", 0);
        if (step.jitter > step.time)
            node.fail(QStringLiteral("expected at most the time of the wait"), QStringLiteral("jitter"));
        step.text = QLatin1String("wait ") + secondsText(step.time);
        break;
    case ScenarioStep::When:
        step.condition = reader.condition(key, overTree);
        if (node.contains(QStringLiteral("within")))
            step.within = reader.time("within", std::nullopt);
        step.text = QLatin1String("when ") + reader.text(key);
        break;
    case ScenarioStep::Expect:
        step.condition = reader.condition(key, overTree);
        step.throughout = node.contains(QStringLiteral("throughout"));
        if (step.throughout && node.contains(QStringLiteral("within")))
            node.fail(QStringLiteral("an expectation is 'within' a time or 'throughout' it"),
                QStringLiteral("within"));
        step.within =
            step.throughout ? reader.time("throughout", std::nullopt) : reader.time("within", DefaultWithin);
        step.text = QLatin1String("expect ") + reader.text(key)
            + (step.throughout ? QLatin1String(" throughout ") : QLatin1String(" within "))
            + secondsText(*step.within);
        break;
    case ScenarioStep::ExpectRequest:
        readRequest(&step, reader);
        break;
    case ScenarioStep::Ramp:
        step.words = reader.words(node.at(key));
        step.time = reader.time("in", std::nullopt);
        step.ramp = {reader.number("from", std::nullopt, -1e9, 1e9),
            reader.number("to", std::nullopt, -1e9, 1e9), reader.number("jitter", 0, 0, 1e9),
            reader.integer("decimals", 0, 0, 6), timeOf(reader.number("every", 1, 0.001, LongestTime))};
        step.text = QStringLiteral("ramp %1 from %2 to %3 in %4")
                        .arg(step.words.join(u' '), step.rampText(step.ramp.from),
                            step.rampText(step.ramp.to), secondsText(step.time));
        break;
    case ScenarioStep::Repeat:
        step.times = reader.integer("repeat", 0, 0, 1'000'000);
        step.variable = reader.variableName(QStringLiteral("counter"));
        if (node.contains(QStringLiteral("while")))
            step.condition = reader.condition(QStringLiteral("while"), overTree);
        body();
        step.text = QLatin1String("repeat ") + QString::number(step.times);
        break;
    case ScenarioStep::ForEach: {
        const auto members = node.map(key).members();
        if (members.size() != 1 || !isName(members.front().first))
            node.fail(QStringLiteral("expected one variable and its list of values"), key);
        step.variable = members.front().first;
        for (const JsonNode &value : members.front().second.elements()) {
            const auto text = value.asText();
            step.values.append(text ? QVariant(reader.filled(*text, value)) : value.asScalar());
        }
        body();
        step.text = QLatin1String("for each ") + step.variable;
        break;
    }
    case ScenarioStep::Together:
        for (const JsonNode &list : node.at(key).elements())
            step.bodies.push_back(list.elements());
        step.text = QLatin1String("together");
        break;
    case ScenarioStep::Include:
        include(&step, reader);
        break;
    }
    if (step.isExpectation())
        step.name = node.contains(QStringLiteral("name")) ? reader.text(QStringLiteral("name")) : step.text;
    return step;
}

void Scenario::readRequest(ScenarioStep *step, const Reader &reader)
{
    const QString key = QStringLiteral("expect-request");
    const QString with = QStringLiteral("with");
    const JsonNode &node = step->node;
    const QString name = reader.text(key);
    try {
        step->request = &publicRequestNamed(name);
    } catch (const Error &error) {
        node.fail(error.text(), key);
    }
    step->times = reader.integer("times", 1, 1, 1'000'000);
    step->within = reader.time("within", DefaultWithin);
    step->matches = [](const QVariantMap &) { return true; };
    step->text = QLatin1String("expect-request ") + name;
    if (node.contains(with)) {
        const auto fields = std::make_shared<QVariantMap>();
        const Condition condition = reader.condition(with, Condition::fieldsOf(*step->request, fields));
        step->matches = [fields, condition](const QVariantMap &asked) {
            *fields = asked;
            return condition.holds();
        };
        step->text += QLatin1String(" with ") + reader.text(with);
    }
    if (step->times > 1)
        step->text += QStringLiteral(", %1 times").arg(step->times);
    step->text += QLatin1String(" within ") + secondsText(*step->within);
}

// The steps of another file, beside the one in which it is named.
void Scenario::include(ScenarioStep *step, const Reader &reader) const
{
    const QString key = QStringLiteral("include");
    const QString with = QStringLiteral("with");
    const JsonNode &node = step->node;
    const QString name = reader.text(key);
    const QString file = QFileInfo(QFileInfo(node.file()).absoluteDir(), name).filePath();
    auto included = m_included.constFind(file);
    if (included == m_included.cend()) {
        if (!QFileInfo::exists(file))
            node.fail(QLatin1String("there is no file ") + file, key);
        included = m_included.insert(
            file, readFile(JsonNode::parseFile(file), {QStringLiteral("seed"), QStringLiteral("phone")}));
    }
    step->variables = included->variables;
    for (const auto &[variable, value] : node.map(with).members()) {
        if (!step->variables.contains(variable))
            value.fail(QLatin1String("the included file has no variable '") + variable + u'\'');
        const auto text = value.asText();
        step->variables.insert(variable, text ? QVariant(reader.filled(*text, value)) : value.asScalar());
    }
    step->bodies = {included->steps};
    step->text = QLatin1String("include ") + name;
}

void Scenario::check(
    const std::vector<JsonNode> &steps, const ScenarioVariables &variables, const CheckOrder &order)
{
    if (++m_depth > DeepestSteps)
        steps.front().fail(QStringLiteral("steps are nested too deeply; does a file include itself?"));
    Time last{0};
    for (const JsonNode &node : steps) {
        const ScenarioStep step = this->step(node, variables);
        if (step.at && *step.at < last)
            node.fail(QStringLiteral("this is before the step above it"), At);
        last = step.at.value_or(last);
        m_hasExpectations = m_hasExpectations || step.isExpectation();
        if (step.kind == ScenarioStep::Tell) {
            checkOrder(node, step.words, order);
        } else if (step.kind == ScenarioStep::Ramp) {
            for (const double end : {step.ramp.from, step.ramp.to})
                checkOrder(node, step.words + QStringList{step.rampText(end)}, order);
        }
        QVariantList values{QVariant()};
        if (step.kind == ScenarioStep::Repeat)
            values = {1.0, double(step.times)};
        else if (step.kind == ScenarioStep::ForEach)
            values = step.values;
        for (const QVariant &value : std::as_const(values)) {
            ScenarioVariables inner = step.variables;
            if (!step.variable.isEmpty())
                inner.insert(step.variable, value);
            for (const auto &body : step.bodies)
                check(body, inner, order);
        }
    }
    --m_depth;
}

void Scenario::checkOrder(const JsonNode &node, const QStringList &words, const CheckOrder &check)
{
    try {
        check(words);
    } catch (const WrongOrder &error) {
        node.fail(error.text());
    } catch (const Error &) {
        // It depends on what the phone is like by then.
    }
}

JsonNode readPhoneFile(const QString &file)
{
    JsonNode node = JsonNode::parseFile(file);
    return node.contains(Steps) ? node.map(QStringLiteral("phone")) : node;
}

} // namespace oz::services
