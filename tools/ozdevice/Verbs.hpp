#pragma once

#include "Arguments.hpp"
#include "facilities/CommandError.hpp"
#include "ozdevice/Words.hpp"

#include <functional>
#include <memory>
#include <type_traits>

namespace oz::tools {

using arguments::Verb;

/*! Executes the parsed command line once the application object exists, and returns the exit status. */
using Action = std::function<int()>;

/*! Adds verbs with options of their own, which live as long as the program, to a parser. */
template <typename Options>
class Verbs
{
public:
    Verbs(const Verb &parser, Action &action) : m_parser(parser), m_action(action) { }

    /*! Adds a verb that calls \a run, and returns its parser and its options. */
    auto add(const char *name, const char *help, int (*run)(const Options &))
    {
        auto options = std::make_shared<Options>();
        const Verb verb = m_parser.add(name, help);
        verb.whenCalled([&action = m_action, options, run](const std::vector<std::string> &rest) {
            // Words that begin with "-" are left over by the parser if the verb accepts them.
            if constexpr (requires { options->words; }) {
                for (const std::string &word : rest)
                    options->words.push_back(word);
                for (const std::string &word : wordsAfterDashes())
                    options->words.push_back(word);
            }
            action = [options, run] { return run(*options); };
        });
        return std::pair(verb, options);
    }

private:
    Verb m_parser;
    Action &m_action;
};

/*! Each adds its verbs to \a parser; the called one sets \a action. */
void addCallVerb(const Verb &parser, Action &action);
void addCompletionVerbs(const Verb &parser, Action &action);
void addDemoVerb(const Verb &parser, Action &action);
void addDescribeVerb(const Verb &parser, Action &action);
void addListVerb(const Verb &parser, Action &action);
void addPlayVerb(const Verb &parser, Action &action);
void addPpsVerbs(const Verb &parser, Action &action);
void addRecordVerb(const Verb &parser, Action &action);
void addRunVerb(const Verb &parser, Action &action);
void addSetVerb(const Verb &parser, Action &action);
void addShowVerb(const Verb &parser, Action &action);
void addSimVerb(const Verb &parser, Action &action);
void addStatusVerbs(const Verb &parser, Action &action);
void addTopVerb(const Verb &parser, Action &action);
void addWatchVerb(const Verb &parser, Action &action);

} // namespace oz::tools
