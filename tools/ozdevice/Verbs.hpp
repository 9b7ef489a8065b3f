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

/*! Each adds its verb to \a parser; the one that is called for sets \a action. */
void addCallVerb(CLI::App &parser, Action &action);
void addCompletionVerbs(CLI::App &parser, Action &action);
void addDemoVerb(CLI::App &parser, Action &action);
void addDescribeVerb(CLI::App &parser, Action &action);
void addDoctorVerb(CLI::App &parser, Action &action);
void addListVerb(CLI::App &parser, Action &action);
void addPlayVerb(CLI::App &parser, Action &action);
void addPpsVerbs(CLI::App &parser, Action &action);
void addRecordVerb(CLI::App &parser, Action &action);
void addRunVerb(CLI::App &parser, Action &action);
void addSetVerb(CLI::App &parser, Action &action);
void addShowVerb(CLI::App &parser, Action &action);
void addSimVerb(CLI::App &parser, Action &action);
void addStatusVerb(CLI::App &parser, Action &action);
void addTopVerb(CLI::App &parser, Action &action);
void addWaitReadyVerb(CLI::App &parser, Action &action);
void addWatchVerb(CLI::App &parser, Action &action);

} // namespace oz::tools
