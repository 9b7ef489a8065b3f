#include "scenario/Scenario.hpp"

#include "scenario/StepReader.hpp"
#include "source/Error.hpp"

#include <QDir>
#include <QFileInfo>

#include <cmath>

namespace oz::services {

namespace {

using Time = ScenarioStep::Time;

constexpr double DefaultWithin = 10; // seconds, of an expectation

QString secondsText(Time time)
{
    return QString::number(double(time.count()) / 1000, 'g', 10) + QLatin1String(" s");
}

void readTell(ScenarioStep &step, const StepReader &reader)
{
    step.words = reader.words(reader.node().at(reader.key()));
    step.text = step.words.join(u' ');
}

void readSay(ScenarioStep &step, const StepReader &reader)
{
    step.text = reader.text(reader.key());
}

void readWait(ScenarioStep &step, const StepReader &reader)
{
    step.time = reader.time("wait", std::nullopt);
    step.jitter = reader.time("jitter", 0);
    if (step.jitter > step.time)
        reader.node().fail(QStringLiteral("expected at most the time of the wait"), QStringLiteral("jitter"));
    step.text = QLatin1String("wait ") + secondsText(step.time);
}

void readWhen(ScenarioStep &step, const StepReader &reader)
{
    step.condition = reader.condition(reader.key());
    if (reader.node().contains(QStringLiteral("within")))
        step.within = reader.time("within", std::nullopt);
    step.text = QLatin1String("when ") + reader.text(reader.key());
}

void readWaitUntil(ScenarioStep &step, const StepReader &reader)
{
    if (reader.text(reader.key()) != QLatin1String("handled"))
        reader.node().fail(
            QStringLiteral("expected \"handled\"; 'when' waits for a condition"), reader.key());
    step.within = reader.time("within", DefaultWithin);
    step.text = QLatin1String("wait until handled within ") + secondsText(*step.within);
}

void readExpect(ScenarioStep &step, const StepReader &reader)
{
    const JsonNode &node = reader.node();
    step.condition = reader.condition(reader.key());
    step.throughout = node.contains(QStringLiteral("throughout"));
    if (step.throughout && node.contains(QStringLiteral("within")))
        node.fail(
            QStringLiteral("an expectation is 'within' a time or 'throughout' it"), QStringLiteral("within"));
    step.within =
        step.throughout ? reader.time("throughout", std::nullopt) : reader.time("within", DefaultWithin);
    step.text = QLatin1String("expect ") + reader.text(reader.key())
        + (step.throughout ? QLatin1String(" throughout ") : QLatin1String(" within "))
        + secondsText(*step.within);
}

void readRequest(ScenarioStep &step, const StepReader &reader)
{
    const QString &key = reader.key();
    const QString with = QStringLiteral("with");
    const JsonNode &node = reader.node();
    const QString name = reader.text(key);
    try {
        step.request = &publicRequestNamed(name);
    } catch (const Error &error) {
        node.fail(error.text(), key);
    }
    step.times = reader.integer("times", 1, 1, 1'000'000);
    step.within = reader.time("within", DefaultWithin);
    step.matches = [](const QVariantMap &) { return true; };
    step.text = QLatin1String("expect-request ") + name;
    if (node.contains(with)) {
        const auto fields = std::make_shared<QVariantMap>();
        const Condition condition = reader.condition(with, Condition::fieldsOf(*step.request, fields));
        step.matches = [fields, condition](const QVariantMap &asked) {
            *fields = asked;
            return condition.holds();
        };
        step.text += QLatin1String(" with ") + reader.text(with);
    }
    if (step.times > 1)
        step.text += QStringLiteral(", %1 times").arg(step.times);
    step.text += QLatin1String(" within ") + secondsText(*step.within);
}

// A ramp has as many decimals as its ends.
int decimalsOf(double number)
{
    return int(QString::number(number, 'g', 10).section(u'.', 1).size());
}

void readRamp(ScenarioStep &step, const StepReader &reader)
{
    constexpr double Largest = 1e9;
    step.words = reader.words(reader.node().at(reader.key()));
    step.time = reader.time("in", std::nullopt);
    step.ramp = {reader.number("from", std::nullopt, -Largest, Largest),
        reader.number("to", std::nullopt, -Largest, Largest), reader.number("jitter", 0, 0, Largest),
        reader.time("every", 1)};
    if (step.ramp.every == Time(0))
        reader.node().fail(QStringLiteral("expected a time of at least 0.001 s"), QStringLiteral("every"));
    step.text = QStringLiteral("ramp %1 from %2 to %3 in %4")
                    .arg(step.words.join(u' '), step.rampText(step.ramp.from), step.rampText(step.ramp.to),
                        secondsText(step.time));
}

void readBody(ScenarioStep &step, const StepReader &reader)
{
    const QString steps = QStringLiteral("steps");
    if (!reader.node().contains(steps))
        reader.node().fail(reader.key() + QLatin1String(" needs 'steps'"));
    step.bodies.push_back(reader.node().at(steps).elements());
}

void readRepeat(ScenarioStep &step, const StepReader &reader)
{
    step.times = reader.integer("repeat", 0, 0, 1'000'000);
    step.variable = reader.variableName(QStringLiteral("counter"));
    if (reader.node().contains(QStringLiteral("while")))
        step.condition = reader.condition(QStringLiteral("while"));
    readBody(step, reader);
    step.text = QLatin1String("repeat ") + QString::number(step.times);
}

void readForEach(ScenarioStep &step, const StepReader &reader)
{
    const auto members = reader.node().map(reader.key()).members();
    if (members.size() != 1 || !StepReader::isName(members.front().first))
        reader.node().fail(QStringLiteral("expected one variable and its list of values"), reader.key());
    step.variable = members.front().first;
    for (const JsonNode &value : members.front().second.elements())
        step.values.append(reader.value(value));
    readBody(step, reader);
    step.text = QLatin1String("for each ") + step.variable;
}

void readTogether(ScenarioStep &step, const StepReader &reader)
{
    for (const JsonNode &list : reader.node().at(reader.key()).elements())
        step.bodies.push_back(list.elements());
    step.text = QStringLiteral("together");
}

// The steps of another file, beside the one in which it is named.
void readInclude(ScenarioStep &step, const StepReader &reader)
{
    const JsonNode &node = reader.node();
    const QString name = reader.text(reader.key());
    const QString file = QFileInfo(QFileInfo(node.file()).absoluteDir(), name).filePath();
    if (!QFileInfo::exists(file))
        node.fail(QLatin1String("there is no file ") + file, reader.key());
    const ScenarioFile &included = reader.included(file);
    step.variables = included.variables;
    for (const auto &[variable, value] : node.map(QStringLiteral("with")).members()) {
        if (!step.variables.contains(variable))
            value.fail(QLatin1String("the included file has no variable '") + variable + u'\'');
        step.variables.insert(variable, reader.value(value));
    }
    step.bodies = {included.steps};
    step.text = QLatin1String("include ") + name;
}

// Each kind of step: the key that makes it one, the others that it takes, and how it is read.
struct Form
{
    ScenarioStep::Kind kind;
    const char *key;
    const char *others;
    void (*read)(ScenarioStep &step, const StepReader &reader);
};

constexpr Form Forms[] = {
    {ScenarioStep::Tell, "sim", "", readTell},
    {ScenarioStep::Say, "say", "", readSay},
    {ScenarioStep::Wait, "wait", "jitter", readWait},
    {ScenarioStep::When, "when", "within", readWhen},
    {ScenarioStep::Handled, "wait-until", "within", readWaitUntil},
    {ScenarioStep::Expect, "expect", "within throughout name", readExpect},
    {ScenarioStep::ExpectRequest, "expect-request", "with times within name", readRequest},
    {ScenarioStep::Ramp, "ramp", "from to in every jitter", readRamp},
    {ScenarioStep::Repeat, "repeat", "counter while steps", readRepeat},
    {ScenarioStep::ForEach, "for-each", "steps", readForEach},
    {ScenarioStep::Together, "together", "", readTogether},
    {ScenarioStep::Include, "include", "with", readInclude},
};

// The one that \a node is; throws where it is none, or two.
const Form &formOf(const JsonNode &node)
{
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
    return *form;
}

} // namespace

QString ScenarioStep::place() const
{
    return node.file() + u':' + QString::number(node.line());
}

QString ScenarioStep::rampText(double value) const
{
    const int decimals = std::max(decimalsOf(ramp.from), decimalsOf(ramp.to));
    const double scale = std::pow(10, decimals);
    return QString::number(std::round(value * scale) / scale + 0.0, 'f', decimals);
}

ScenarioStep Scenario::step(const JsonNode &node, const ScenarioVariables &variables) const
{
    const QString at = QStringLiteral("at");
    const StepReader reader(*this, node, variables);
    if (node.asText() || node.isList()) {
        ScenarioStep step{ScenarioStep::Tell, node, {}, {}};
        step.words = reader.words(node);
        step.text = step.words.join(u' ');
        return step;
    }
    if (!node.isMap())
        node.fail(QStringLiteral("expected a step: an order, as text or as a list of words, or a map"));
    const Form &form = formOf(node);
    const QString key = QString::fromLatin1(form.key);
    node.allowOnly(QStringList{key, at} + QString::fromLatin1(form.others).split(u' ', Qt::SkipEmptyParts));

    ScenarioStep step{form.kind, node, {}, {}};
    step.variables = variables;
    if (node.contains(at))
        step.at = reader.time("at", std::nullopt);
    form.read(step, reader.withKey(key));
    if (step.isExpectation())
        step.name = node.contains(QStringLiteral("name")) ? reader.text(QStringLiteral("name")) : step.text;
    return step;
}

} // namespace oz::services
