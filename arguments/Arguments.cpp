#include "ozdevice/Verb.hpp"

#include <CLI/CLI.hpp>

namespace oz::tools {

Option Option::required() const
{
    m_option->required();
    return *this;
}

Option Option::valueName(const char *name) const
{
    m_option->type_name(name);
    return *this;
}

Option Option::repeatable() const
{
    m_option->expected(1)->take_all();
    return *this;
}

Option Option::commaSeparated() const
{
    m_option->delimiter(',');
    return *this;
}

Option Option::oneOf(const std::vector<std::string> &values) const
{
    m_option->check(CLI::IsMember(values))->default_str(values.front());
    return *this;
}

Option Option::defaultText(const char *text) const
{
    m_option->default_str(text);
    return *this;
}

Option Option::whenGiven(std::function<void()> given) const
{
    m_option->each([given = std::move(given)](const std::string &) { given(); });
    return *this;
}

Verb Verb::add(const char *name, const char *help) const
{
    return Verb(m_parser->add_subcommand(name, help));
}

void Verb::whenCalled(std::function<void(const std::vector<std::string> &rest)> called) const
{
    m_parser->callback([parser = m_parser, called = std::move(called)] { called(parser->remaining()); });
}

void Verb::footer(const char *text) const
{
    m_parser->footer(text);
}

void Verb::needsVerb() const
{
    m_parser->require_subcommand(1);
}

void Verb::takesAnyWord() const
{
    m_parser->allow_extras();
}

void Verb::hide() const
{
    m_parser->group("");
}

Option Verb::flag(const char *name, bool &value, const char *help) const
{
    return Option(m_parser->add_flag(name, value, help));
}

Option Verb::option(const std::string &name, std::string &value, const std::string &help) const
{
    return Option(m_parser->add_option(name, value, help));
}

Option Verb::option(const char *name, std::vector<std::string> &value, const char *help) const
{
    return Option(m_parser->add_option(name, value, help));
}

Option Verb::option(const char *name, std::optional<quint32> &value, const char *help) const
{
    return Option(m_parser->add_option(name, value, help));
}

Option Verb::count(const char *name, int &value, const char *help) const
{
    // The parser's own check names the largest number that there is.
    const auto problem = [](const std::string &text) {
        int number = 0;
        return CLI::detail::lexical_cast(text, number) && number > 0
            ? std::string()
            : "expected a whole number above 0, not '" + text + "'";
    };
    return Option(m_parser->add_option(name, value, help)->check(problem));
}

Option Verb::duration(const char *name, Duration &value, const char *help) const
{
    return Option(m_parser->add_option(name, value.seconds, help)
                      ->type_name("TIME")
                      ->transform(CLI::AsNumberWithUnit(
                          std::map<std::string, double>{{"ms", 0.001}, {"s", 1}, {"m", 60}, {"h", 3600}}))
                      ->check(CLI::Range(0.0, 2e6)));
}

} // namespace oz::tools
