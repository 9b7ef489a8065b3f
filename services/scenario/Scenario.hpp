#pragma once

#include "phone/JsonNode.hpp"
#include "scenario/Condition.hpp"

#include <QMap>

#include <chrono>
#include <optional>
#include <vector>

namespace oz::services {

/*! The variables that a step sees. */
using ScenarioVariables = QMap<QString, QVariant>;

/*! One step of a scenario, with its variables put in. */
struct ScenarioStep
{
    using Time = std::chrono::milliseconds;
    using PlannedTime = std::chrono::duration<double, std::milli>; // of any number of rounds
    enum Kind {
        Tell,
        Say,
        Wait,
        When,
        Handled,
        Expect,
        ExpectRequest,
        Ramp,
        Repeat,
        ForEach,
        Together,
        Include
    };

    Kind kind = Tell;
    JsonNode node; //!< where it stands
    QString text; //!< what it is, for a log
    std::optional<Time> at; //!< from the beginning of the list in which it stands

    QStringList words = {}; //!< of the order: Tell; Ramp, which adds a value to them
    Time time{0}; //!< that passes: Wait, Ramp
    Time jitter{0}; //!< by which that is more or less
    struct
    {
        double from = 0;
        double to = 0;
        double jitter = 0;
        Time every{0};
    } ramp = {};
    std::optional<Condition> condition = {}; //!< When, Expect; Repeat: while it holds
    std::optional<Time> within = {}; //!< how long that may take: When, Handled, Expect, ExpectRequest
    bool throughout = false; //!< Expect: all the time, and not at some time
    QString name = {}; //!< of an expectation
    const AskedRequest *request = nullptr;
    /*! True if the step means a request with these fields. */
    std::function<bool(const QVariantMap &fields)> matches = {};
    int times = 1; //!< ExpectRequest, Repeat
    QString variable = {}; //!< Repeat, ForEach: that counts, or has each of the values
    QVariantList values = {};
    std::vector<std::vector<JsonNode>> bodies = {}; //!< the steps inside
    ScenarioVariables variables = {}; //!< of those

    [[nodiscard]] bool isExpectation() const { return kind == Expect || kind == ExpectRequest; }
    /*! "file:line". */
    [[nodiscard]] QString place() const;
    /*! A value of a ramp as the order takes it. */
    [[nodiscard]] QString rampText(double value) const;
};

/*! The steps of one file. */
struct ScenarioFile
{
    std::vector<JsonNode> steps;
    ScenarioVariables variables;
};

/*!
 * The events of the simulated phone, and the reactions expected of applications: a commented JSON file,
 * all of which is checked when it is loaded, with the files that it includes. docs/scenarios.md tells what
 * stands in it.
 */
class Scenario
{
public:
    /*! Throws WrongOrder where an order means nothing to the phone, whatever it is like then; other Errors do
     * not matter. */
    using CheckOrder = std::function<void(const QStringList &words)>;

    /*!
     * Reads \a file; throws Error, which names file, line, key and what was expected, where anything in it is
     * wrong. \a given replaces its variables. The conditions are over what \a tree tells.
     */
    Scenario(const QString &file, const ScenarioVariables &given, const Tree &tree, const CheckOrder &check);

    [[nodiscard]] const QString &description() const { return m_description; }
    [[nodiscard]] quint32 seed() const { return m_seed; }
    [[nodiscard]] const std::vector<JsonNode> &steps() const { return m_steps; }
    [[nodiscard]] const ScenarioVariables &variables() const { return m_variables; }
    /*! True if it expects anything of applications. */
    [[nodiscard]] bool hasExpectations() const { return m_hasExpectations; }

    /*! The step at \a node with \a variables; throws Error as the constructor does. */
    [[nodiscard]] ScenarioStep step(const JsonNode &node, const ScenarioVariables &variables) const;
    /*! The content of \a file, which steps include. */
    [[nodiscard]] const ScenarioFile &included(const QString &file) const;
    /*! The phone's time that passes in \a steps, as far as they say it: in waits, ramps, and what holds
     * throughout a time. Lists that are done together count one after another. */
    [[nodiscard]] ScenarioStep::PlannedTime plannedTime(
        const std::vector<JsonNode> &steps, const ScenarioVariables &variables) const;
    /*! Over which its conditions are. */
    [[nodiscard]] const Tree &tree() const { return m_tree; }

private:
    void check(
        const std::vector<JsonNode> &steps, const ScenarioVariables &variables, const CheckOrder &check);
    static void checkOrder(const JsonNode &node, const QStringList &words, const CheckOrder &check);

    const Tree &m_tree;
    QString m_description;
    quint32 m_seed = 1;
    std::vector<JsonNode> m_steps;
    ScenarioVariables m_variables;
    bool m_hasExpectations = false;
    int m_depth = 0; // of steps inside steps, while it is checked
    mutable QMap<QString, ScenarioFile> m_included; // by their file names
};

/*! What \a file says about itself, with nothing of it checked against a phone: its "description", its
 * "report" where it has one, and the number of its "steps"; throws Error where it is no scenario. */
[[nodiscard]] QVariantMap aboutScenario(const QString &file);

/*! The phone that \a file describes: a phone's file, or a scenario that has one of its own. */
[[nodiscard]] JsonNode readPhoneFile(const QString &file);

} // namespace oz::services
