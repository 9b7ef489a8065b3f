#pragma once

/*
 * One request to a control object and its answer: a class states the request, and the texts of its warnings.
 */

#include "PpsReading.hpp"

namespace oz::device {

/*! One request to a control object. */
struct ControlRequest
{
    QString path; //!< with "?wait"
    QVariantMap attributes;
    bool setBlocking = false; //!< setBlocking(true) is called before the object is opened
};

/*! The warnings of one exchange; a failed open warns only where a text is given. */
struct ControlTexts
{
    std::optional<LogText> openFailed;
    LogText encodeFailed;
    LogText writeFailed;
    ReadTexts answer;
};

/*! How an exchange ended. */
struct ControlAnswer
{
    enum Outcome { Answered, NotOpened, Failed };

    Outcome outcome = Failed;
    int error = 0; //!< the errno of an object that did not open
    QVariantMap message; //!< the decoded answer
};

/*! Sends \a request to a control object of its own, waits for the answer and closes the object on every path.
 */
[[nodiscard]] ControlAnswer exchange(const ControlRequest &request, const ControlTexts &texts);

} // namespace oz::device
