#include "scenario/StepReader.hpp"

#include "source/Error.hpp"

#include <QProcess>
#include <QRegularExpression>

namespace oz::services {

namespace {

constexpr double LongestTime = 31'536'000; // seconds: a year

QString textOf(const QVariant &value)
{
    return value.typeId() == QMetaType::Double ? QString::number(value.toDouble(), 'g', 15)
                                               : value.toString();
}

} // namespace

bool StepReader::isName(const QString &text)
{
    static const QRegularExpression form(QStringLiteral("^[A-Za-z][A-Za-z0-9_-]*$"));
    return form.match(text).hasMatch();
}

QString StepReader::filled(QString text, const JsonNode &where) const
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

QString StepReader::text(const QString &key) const
{
    return filled(m_node.text(key, {}), m_node.contains(key) ? m_node.at(key) : m_node);
}

double StepReader::number(const char *name, std::optional<double> fallback, double least, double most) const
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

int StepReader::integer(const char *name, int fallback, int least, int most) const
{
    const double value = number(name, fallback, least, most);
    if (value != double(int(value)))
        m_node.fail(QStringLiteral("expected a whole number"), QString::fromLatin1(name));
    return int(value);
}

ScenarioStep::Time StepReader::time(const char *name, std::optional<double> fallback) const
{
    return ScenarioStep::Time(qRound64(number(name, fallback, 0, LongestTime) * 1000));
}

QStringList StepReader::words(const JsonNode &value) const
{
    QStringList words;
    if (const auto text = value.asText()) {
        for (const QString &word : QProcess::splitCommand(*text))
            words.append(filled(word, value));
    } else if (value.isList()) {
        for (const JsonNode &element : value.elements())
            words.append(filled(textOf(element.asScalar()), element));
    } else {
        value.fail(QStringLiteral("expected an order as for `ozdevice sim`, as text or as a list of words"));
    }
    if (words.size() < 2)
        value.fail(QStringLiteral(
            "expected an order as for `ozdevice sim`: \"FACILITY [NAME] VERB [ARGUMENT...]\""));
    return words;
}

QVariant StepReader::value(const JsonNode &value) const
{
    const auto text = value.asText();
    return text ? QVariant(filled(*text, value)) : value.asScalar();
}

Condition StepReader::condition(const QString &key) const
{
    return condition(
        key, [this](const QString &word) { return Condition::valueOfTree(word, m_scenario.tree()); });
}

Condition StepReader::condition(const QString &key, const Condition::Names &names) const
{
    const JsonNode member = m_node.at(key);
    const QString written = text(key);
    try {
        return Condition::parse(written, names);
    } catch (const Error &error) {
        member.fail(error.text());
    }
}

QString StepReader::variableName(const QString &key) const
{
    QString name = m_node.text(key, {});
    if (m_node.contains(key) && !isName(name))
        m_node.fail(QStringLiteral("expected the name of a variable: letters, digits, '-' and '_'"), key);
    return name;
}

} // namespace oz::services
