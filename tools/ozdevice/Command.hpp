#pragma once

#include <QString>
#include <QStringList>

#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

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

/*! The words of the call after "--", which the parser does not see: whatever they are, they are only words.
 */
[[nodiscard]] const std::vector<std::string> &wordsAfterDashes();
void setWordsAfterDashes(const std::vector<std::string> &words);

/*! The words as the Qt side has them. */
[[nodiscard]] QStringList toStringList(const std::vector<std::string> &words);

/*! The words as "a, b and c". */
[[nodiscard]] QString enumerated(const QStringList &words);

/*! The most similar of \a known, for who has mistyped \a word; empty where none is similar. */
[[nodiscard]] QStringList nearest(const QString &word, const QStringList &known);

/*! That \a word is none of \a known, with the nearest ones, or all where none is near. */
[[nodiscard]] QString unknownText(const QString &what, const QString &word, const QStringList &known);

} // namespace oz::tools
