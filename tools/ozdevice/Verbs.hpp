#pragma once

#include "ozdevice/Command.hpp"

#include <CLI/CLI.hpp>

#include <memory>
#include <type_traits>

namespace oz::tools {

/*! Adds verbs to a parser; each has options of its own, which live as long as the program. */
template <typename Options>
class Verbs
{
public:
    Verbs(CLI::App &parser, Action &action) : m_parser(parser), m_action(action) { }

    /*! A verb that runs \a run: its parser, and its options. */
    auto add(const char *name, const char *help, int (*run)(const Options &))
    {
        auto options = std::make_shared<Options>();
        CLI::App *verb = m_parser.add_subcommand(name, help);
        verb->callback([&action = m_action, options, verb, run] {
            // Where a verb takes words that begin with "-", the parser has left them over.
            if constexpr (requires { options->words; }) {
                for (const std::string &word : verb->remaining())
                    options->words.push_back(word);
                for (const std::string &word : wordsAfterDashes())
                    options->words.push_back(word);
            }
            action = [options, run] { return run(*options); };
        });
        return std::pair(verb, options);
    }

private:
    CLI::App &m_parser;
    Action &m_action;
};

} // namespace oz::tools
