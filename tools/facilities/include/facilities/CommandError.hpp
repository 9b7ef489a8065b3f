#pragma once

#include <QString>
#include <QStringList>

#include <stdexcept>

namespace oz::tools {

using namespace Qt::StringLiterals;

/*! The exit statuses of the program, beside those of commands that it runs and of signals. */
enum Status {
    Success = 0,
    Failed = 1, //!< a request was refused or did not work
    WrongUse = 2, //!< the command line is wrong
    Unavailable = 3, //!< an object of the tree is missing, or this user may not use it
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

/*! The words as "a, b and c". */
[[nodiscard]] QString enumerated(const QStringList &words);

/*! Says that \a word is none of \a known, and names the most similar ones, or all if none is similar. */
[[nodiscard]] QString unknownText(const QString &what, const QString &word, const QStringList &known);

} // namespace oz::tools
