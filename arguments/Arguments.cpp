#include "Arguments.hpp"

#include <CLI/CLI.hpp>

namespace oz::arguments {

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

Option Option::needs(const Option &other) const
{
    m_option->needs(other.m_option);
    return *this;
}

Option Option::hide() const
{
    m_option->group("");
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

Option Verb::option(const char *name, std::optional<std::uint32_t> &value, const char *help) const
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

Option Verb::duration(const char *name, double &seconds, const char *help) const
{
    return Option(m_parser->add_option(name, seconds, help)
                      ->type_name("TIME")
                      ->transform(CLI::AsNumberWithUnit(
                          std::map<std::string, double>{{"ms", 0.001}, {"s", 1}, {"m", 60}, {"h", 3600}}))
                      ->check(CLI::Range(0.0, 2e6)));
}

std::string Verb::name() const
{
    return m_parser->get_name();
}

bool Verb::isHidden() const
{
    return m_parser->get_group().empty();
}

std::vector<Verb> Verb::verbs() const
{
    std::vector<Verb> verbs;
    for (CLI::App *below : m_parser->get_subcommands([](CLI::App *) { return true; }))
        verbs.emplace_back(below);
    return verbs;
}

std::vector<std::string> Verb::longOptions() const
{
    std::vector<std::string> names;
    for (const CLI::Option *option : m_parser->get_options()) {
        for (const std::string &name : option->get_lnames())
            names.push_back("--" + name);
    }
    return names;
}

bool Verb::takesValue(const std::string &option) const
{
    const CLI::Option *known = m_parser->get_option_no_throw(option);
    return known && known->get_items_expected() > 0;
}

Parser::Parser(const char *description, const char *name, const char *version)
    : m_parser(std::make_unique<CLI::App>(description, name))
{
    m_parser->set_version_flag("--version", version);
}

Parser::~Parser() = default;

Verb Parser::program() const
{
    return Verb(m_parser.get());
}

void Parser::addHelpOfAll() const
{
    m_parser->set_help_all_flag("--help-all", "The help of all verbs");
}

bool Parser::parse(int count, char **words) const
{
    try {
        m_parser->parse(count, words);
        return true;
    } catch (const CLI::Success &help) {
        m_parser->exit(help);
        return false;
    } catch (const CLI::ParseError &error) {
        throw WrongWords(error.what());
    }
}

} // namespace oz::arguments
