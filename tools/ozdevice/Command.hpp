#pragma once

#include <QString>
#include <QStringList>

#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace oz::tools {

/*! The exit statuses of the program; a command that is run, and a signal, have their own. */
enum Status {
    Success = 0,
    Failed = 1, //!< what was asked for was refused, or did not work
    WrongUse = 2, //!< the words of the call are off
    Unavailable = 3, //!< an object of the tree is not there, or not for this user
};

/*! Ends the program with one line on standard error. */
class CommandError : public std::runtime_error
{
public:
    CommandError(Status status, const QString &text)
        : std::runtime_error(text.toStdString()), m_status(status)
    {
    }
    [[nodiscard]] Status status() const { return m_status; }

private:
    Status m_status;
};

/*! Does what the parsed words say, once the application object exists; the exit status. */
using Action = std::function<int()>;

/*! Each adds its verbs to \a parser; the one that is called for sets \a action. */
void addFacilityCommands(CLI::App &parser, Action &action);
void addTreeCommands(CLI::App &parser, Action &action);
void addPhoneCommands(CLI::App &parser, Action &action);
void addCompletionCommands(CLI::App &parser, Action &action);

/*! The words of the call after "--", which the parser does not see: whatever they are, they are only words.
 */
[[nodiscard]] const std::vector<std::string> &wordsAfterDashes();

/*! Writes one line to standard output, at once. */
void printLine(const QString &line);

/*! That an object of the facility is not there, in words; with a hint where no services may be running. */
[[nodiscard]] QString unavailableText(const QString &facility, const QString &problem);

/*! The library's warnings since the last call, each once. */
[[nodiscard]] QStringList takeLibraryWarnings();

enum class Paint { Bold, Dim, Value };
/*! \a text in a colour, where standard output is a terminal and NO_COLOR is not set. */
[[nodiscard]] QString painted(Paint paint, const QString &text);

/*! "250ms", "10s", "1.5s", "2m" or a number of seconds, in milliseconds; throws CommandError. */
[[nodiscard]] int milliseconds(const QString &duration);

/*! The words as "a, b and c". */
[[nodiscard]] QString enumerated(const QStringList &words);

} // namespace oz::tools
