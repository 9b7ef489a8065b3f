#include "scenario/Scenario.hpp"

#include "phone/SimVerb.hpp"
#include "scenario/StepReader.hpp"

#include <algorithm>
#include <limits>

namespace oz::services {

namespace {

constexpr int DeepestSteps = 20;

const QString Steps = QStringLiteral("steps");
const QString Variables = QStringLiteral("variables");
const QString Description = QStringLiteral("description");
const QString Report = QStringLiteral("report");

ScenarioFile readFile(const JsonNode &root)
{
    root.allowOnly({Description, QStringLiteral("seed"), QStringLiteral("phone"), Report, Variables, Steps});
    (void)root.map(Report);
    ScenarioFile content;
    for (const auto &[name, value] : root.map(Variables).members()) {
        if (!StepReader::isName(name))
            value.fail(QStringLiteral("the name of a variable is letters, digits, '-' and '_'"));
        content.variables.insert(name, value.asScalar());
    }
    content.steps = root.at(Steps).elements();
    return content;
}

} // namespace

Scenario::Scenario(
    const QString &file, const ScenarioVariables &given, const Tree &tree, const CheckOrder &checkOrder)
    : m_tree(tree)
{
    const JsonNode root = JsonNode::parseFile(file);
    ScenarioFile content = readFile(root);
    m_description = root.text(Description, {});
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

const ScenarioFile &Scenario::included(const QString &file) const
{
    auto included = m_included.constFind(file);
    if (included == m_included.cend()) {
        included = m_included.insert(file, readFile(JsonNode::parseFile(file)));
    }
    return *included;
}

void Scenario::check(
    const std::vector<JsonNode> &steps, const ScenarioVariables &variables, const CheckOrder &order)
{
    if (++m_depth > DeepestSteps)
        steps.front().fail(QStringLiteral("steps are nested too deeply; does a file include itself?"));
    ScenarioStep::Time last{0};
    for (const JsonNode &node : steps) {
        const ScenarioStep step = this->step(node, variables);
        if (step.at && *step.at < last)
            node.fail(QStringLiteral("this is before the step above it"), QStringLiteral("at"));
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

ScenarioStep::PlannedTime Scenario::plannedTime(
    const std::vector<JsonNode> &steps, const ScenarioVariables &variables) const
{
    ScenarioStep::PlannedTime planned{0};
    for (const JsonNode &node : steps) {
        const ScenarioStep step = this->step(node, variables);
        if (step.at)
            planned = std::max(planned, ScenarioStep::PlannedTime(*step.at));
        planned += step.time;
        if (step.throughout)
            planned += *step.within;
        // The rounds of a repetition take as long as the first one; those for each value may not.
        const bool isRepeat = step.kind == ScenarioStep::Repeat;
        const QVariantList rounds =
            step.kind == ScenarioStep::ForEach ? step.values : QVariantList{QVariant(1.0)};
        ScenarioStep::PlannedTime inside{0};
        for (const QVariant &round : rounds) {
            ScenarioVariables inner = step.variables;
            if (!step.variable.isEmpty())
                inner.insert(step.variable, round);
            for (const auto &body : step.bodies)
                inside += plannedTime(body, inner);
        }
        planned += inside * (isRepeat ? step.times : 1);
    }
    return planned;
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

QVariantMap aboutScenario(const QString &file)
{
    const JsonNode root = JsonNode::parseFile(file);
    QVariantMap about{
        {Description, root.text(Description, {})}, {Steps, qint64(readFile(root).steps.size())}};
    if (root.contains(Report))
        about.insert(Report, root.map(Report).content());
    return about;
}

JsonNode readPhoneFile(const QString &file)
{
    JsonNode node = JsonNode::parseFile(file);
    return node.contains(Steps) ? node.map(QStringLiteral("phone")) : node;
}

} // namespace oz::services
