#pragma once

#include "ozdevice/Durations.hpp"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace CLI {
class App;
class Option;
} // namespace CLI

namespace oz::tools {

/*! An option of a verb, or one of its words; what it is told returns itself. */
class Option
{
public:
    explicit Option(CLI::Option *option) : m_option(option) { }

    Option required() const;
    /*! What the help calls its value. */
    Option valueName(const char *name) const;
    /*! Takes one value each time that it is given. */
    Option repeatable() const;
    /*! Its values may be joined by commas. */
    Option commaSeparated() const;
    /*! Only these values; the first is that of who gives none. */
    Option oneOf(const std::vector<std::string> &values) const;
    /*! What the help says of who gives none. */
    Option defaultText(const char *text) const;
    /*! Calls \a given where it is given. */
    Option whenGiven(std::function<void()> given) const;

private:
    CLI::Option *m_option;
};

/*! A verb as the parser knows it. Its source alone knows the parser, whose headers take the compiler longer
 * than everything else of a verb. */
class Verb
{
public:
    explicit Verb(CLI::App *parser) : m_parser(parser) { }

    /*! One more verb below this one. */
    [[nodiscard]] Verb add(const char *name, const char *help) const;
    /*! Calls \a called with the words that no option has taken, where this verb is the one that is called
     * for. */
    void whenCalled(std::function<void(const std::vector<std::string> &rest)> called) const;
    /*! What the help ends with. */
    void footer(const char *text) const;
    /*! One of the verbs below it must follow. */
    void needsVerb() const;
    /*! Words that look like options, and are none of its own, are left over for it. */
    void takesAnyWord() const;
    /*! Leaves it out of the help. */
    void hide() const;

    /*! Each fills in \a value, which has to live as long as the parser. A name without dashes is that of a
     * word. */
    Option flag(const char *name, bool &value, const char *help) const;
    Option option(const std::string &name, std::string &value, const std::string &help = {}) const;
    Option option(const char *name, std::vector<std::string> &value, const char *help = "") const;
    Option option(const char *name, std::optional<quint32> &value, const char *help) const;
    /*! A whole number above 0. */
    Option count(const char *name, int &value, const char *help) const;
    /*! "500ms", "10s", "1.5m", "2h" or a number of seconds, up to 23 days. */
    Option duration(const char *name, Duration &value, const char *help) const;

    [[nodiscard]] CLI::App *parser() const { return m_parser; }

private:
    CLI::App *m_parser;
};

} // namespace oz::tools
