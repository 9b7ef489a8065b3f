#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace CLI {
class App;
class Option;
} // namespace CLI

namespace oz::arguments {

/*! An option of a verb, or one of its words; what it is told returns itself. */
class Option
{
public:
    explicit Option(CLI::Option *option) : m_option(option) { }

    Option required() const;
    /*! Sets the name of its value in the help. */
    Option valueName(const char *name) const;
    /*! Takes one value each time that it is given. */
    Option repeatable() const;
    /*! Its values may be joined by commas. */
    Option commaSeparated() const;
    /*! Only these values; the first is that of who gives none. */
    Option oneOf(const std::vector<std::string> &values) const;
    /*! Sets the default that the help shows. */
    Option defaultText(const char *text) const;
    /*! Calls \a given where it is given. */
    Option whenGiven(std::function<void()> given) const;
    /*! It is wrong without \a other. */
    Option needs(const Option &other) const;
    /*! Leaves it out of the help. */
    Option hide() const;

private:
    CLI::Option *m_option;
};

/*! A verb as the parser knows it, or the program, below which the verbs are. */
class Verb
{
public:
    explicit Verb(CLI::App *parser) : m_parser(parser) { }

    /*! One more verb below this one. */
    [[nodiscard]] Verb add(const char *name, const char *help) const;
    /*! Calls \a called with the words that no option has taken, where this verb is the one that is called
     * for. */
    void whenCalled(std::function<void(const std::vector<std::string> &rest)> called) const;
    /*! Sets the last lines of the help. */
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
    Option option(const char *name, std::optional<std::uint32_t> &value, const char *help) const;
    /*! A whole number above 0. */
    Option count(const char *name, int &value, const char *help) const;
    /*! "500ms", "10s", "1.5m", "2h" or a number of seconds, up to 23 days. */
    Option duration(const char *name, double &seconds, const char *help) const;

    [[nodiscard]] std::string name() const;
    [[nodiscard]] bool isHidden() const;
    /*! Those below this one. */
    [[nodiscard]] std::vector<Verb> verbs() const;
    /*! With their dashes. */
    [[nodiscard]] std::vector<std::string> longOptions() const;
    [[nodiscard]] bool takesValue(const std::string &option) const;

private:
    CLI::App *m_parser;
};

/*! The words are none that the program knows. */
class WrongWords : public std::runtime_error
{
    using std::runtime_error::runtime_error;
};

/*! Parses what a program is called with. */
class Parser
{
public:
    Parser(const char *description, const char *name, const char *version);
    ~Parser();
    Parser(const Parser &) = delete;
    Parser &operator=(const Parser &) = delete;

    [[nodiscard]] Verb program() const;
    /*! An option that prints the help of all verbs. */
    void addHelpOfAll() const;
    /*! Fills in the values of the options; false where the help or the version was asked for, which it has
     * printed. Throws WrongWords. */
    [[nodiscard]] bool parse(int count, char **words) const;

private:
    std::unique_ptr<CLI::App> m_parser;
};

} // namespace oz::arguments
