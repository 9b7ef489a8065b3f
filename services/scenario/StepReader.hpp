#pragma once

#include "scenario/Scenario.hpp"

namespace oz::services {

/*! The members of one step, with the variables put in. */
class StepReader
{
public:
    StepReader(const Scenario &scenario, const JsonNode &node, const ScenarioVariables &variables)
        : m_scenario(scenario), m_node(node), m_variables(variables)
    {
    }
    /*! The same, of a step that \a key makes what it is. */
    [[nodiscard]] StepReader withKey(const QString &key) const
    {
        StepReader reader = *this;
        reader.m_key = key;
        return reader;
    }

    [[nodiscard]] const JsonNode &node() const { return m_node; }
    [[nodiscard]] const QString &key() const { return m_key; }

    [[nodiscard]] QString text(const QString &key) const;
    /*! A number, or the name of a variable that has one. */
    [[nodiscard]] double number(
        const char *name, std::optional<double> fallback, double least, double most) const;
    [[nodiscard]] int integer(const char *name, int fallback, int least, int most) const;
    [[nodiscard]] ScenarioStep::Time time(const char *name, std::optional<double> fallback) const;
    /*! Words of an order: text that is split at blanks, or a list of words that may have some. */
    [[nodiscard]] QStringList words(const JsonNode &value) const;
    /*! A variable's value. */
    [[nodiscard]] QVariant value(const JsonNode &value) const;
    /*! Over the values that the tree tells. */
    [[nodiscard]] Condition condition(const QString &key) const;
    [[nodiscard]] Condition condition(const QString &key, const Condition::Names &names) const;
    [[nodiscard]] QString variableName(const QString &key) const;
    [[nodiscard]] const ScenarioFile &included(const QString &file) const
    {
        return m_scenario.included(file);
    }

    /*! True if \a text can be the name of a variable. */
    [[nodiscard]] static bool isName(const QString &text);

private:
    [[nodiscard]] QString filled(QString text, const JsonNode &where) const;

    const Scenario &m_scenario;
    const JsonNode &m_node;
    const ScenarioVariables &m_variables;
    QString m_key;
};

} // namespace oz::services
