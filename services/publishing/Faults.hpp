#pragma once

#include <QList>
#include <QMap>
#include <QString>
#include <QStringList>

#include <functional>
#include <optional>
#include <utility>
#include <vector>

namespace oz::services {

/*! A fault in the answer to a request. */
struct Fault
{
    enum Kind {
        FailWith, //!< the answer is the error \a number
        AnswerLate, //!< the request is handled after \a number milliseconds, if its client waits for so long
        NeverAnswer, //!< nothing answers while the client waits
        DieOnRequest, //!< the connection ends without an answer
        AnswerRubbish, //!< the answer is malformed
    };

    Kind kind = FailWith;
    int number = 0;
};

/*! The name and range of the errors in a service's answers. */
struct FaultErrors
{
    QString name = QStringLiteral("ERRNO");
    int least = 1;
    int most = 4095;
    QMap<QString, QString> titles = usualTitles(); //!< of some of them, for people

    [[nodiscard]] static QMap<QString, QString> usualTitles();
};

/*! The requests that a fault can be ordered for: the next one whatever it is, or the next of a kind. */
struct FaultOrder
{
    QString name; //!< "fail-with", "answer-late", ...
    QString help;
    QStringList words; //!< of which the first argument is one; none where it takes no word
    QString number; //!< what its number is called; empty where it takes none
    int least = 0;
    int most = 0;
    QString unit = {};
    QMap<QString, QString> titles = {}; //!< what some of the numbers mean
    /*! Orders it. */
    std::function<void(const QString &word, int number)> give;
};

/*! Lets the next request to one control object go wrong, as it is ordered. */
class Faults
{
public:
    /*! The words of kinds of requests, and their messages. */
    using Words = QList<std::pair<QString, QString>>;

    /*!
     * Those of the requests in \a words can be told to fail one by one, with \a errors. Only \a kinds can
     * happen to any request; none are all of them.
     */
    explicit Faults(
        const Words &words = {}, const FaultErrors &errors = {}, const QList<Fault::Kind> &kinds = {})
        : m_words(words), m_errors(errors), m_kinds(kinds)
    {
    }
    Faults(const Faults &) = delete; // the orders refer to it
    Faults &operator=(const Faults &) = delete;

    /*! The faults that can be ordered. */
    [[nodiscard]] std::vector<FaultOrder> orders();
    /*! The fault, if any, for the request \a message that has come; each happens once. */
    [[nodiscard]] std::optional<Fault> take(const QString &message);

private:
    std::optional<Fault> m_next;
    Words m_words;
    FaultErrors m_errors;
    QList<Fault::Kind> m_kinds;
    QMap<QString, int> m_failing; // the errors of the next requests, by their messages
};

/*! The words of those requests of a table that have one. */
template <typename Table>
Faults::Words faultWords(const Table &requests)
{
    Faults::Words words;
    for (const auto &request : requests) {
        if (!request.word.isEmpty())
            words.append({request.word, request.message});
    }
    return words;
}

} // namespace oz::services
