#pragma once

#include "source/Error.hpp"

#include <QMap>
#include <QString>
#include <QStringList>
#include <QVariant>

#include <functional>
#include <vector>

namespace oz::services {

struct Reply;

struct FaultOrder;

/*! An order that means nothing, whatever the phone is like: an unknown verb, or a value that it does not
 * take. */
class WrongOrder : public Error
{
public:
    using Error::Error;
};

/*! The reply to whom an order was refused: EINVAL where it means nothing, and ECANCELED where it does not fit
 * what the phone is like now. */
[[nodiscard]] Reply refusalFor(const Error &error);

/*! The values of an argument, for completion and controls. */
struct SimChoice
{
    QStringList words = {}; //!< one of these
    double least = 0; //!< or a number from this
    double most = 0; //!< to this; where it is no more than the least, there are no numbers
    double step = 1;
    QString unit = {};
    /*! What words, or some of the numbers, mean, for people. */
    QMap<QString, QString> titles = {};
    /*! Of a first argument: the words that want the optional one after it, and those that refuse it. */
    QStringList followed = {};
    QStringList alone = {};
};

/*! A thing that a part of the phone can be told to do while it runs. */
struct SimVerb
{
    QString name;
    QStringList arguments; //!< their names, for help; "[NAME]" for one that may be left out
    QString help;
    /*! Does it, with as many arguments as allowed; throws Error where that is impossible. */
    std::function<void(const QStringList &arguments)> run;
    /*! Throws WrongOrder where run() would; for verbs of services, which have no double to try them on. */
    std::function<void(const QStringList &arguments)> check = [](const QStringList &) {};
    /*! The argument that would leave the phone as it is: the word of its only argument, or whether it is
     * on; of a verb without arguments, whether it has been done. */
    std::function<QVariant()> now = {};
    QMap<QString, SimChoice> choices = {}; //!< by argument; "A|B" and "A,..." offer themselves
    bool isFault = false; //!< of services, not of the phone
    /*! Of a verb without arguments: what it sets. One of those that set the same is so at a time. */
    QString sets = {};
    bool repeats = false; //!< another verb without arguments does the same
    QString formerName = {}; //!< which goes on working, and is shown nowhere

    /*! A verb that switches something, with the argument "on" or "off". */
    static SimVerb onOff(const QString &verb, const QString &description,
        const std::function<void(bool on)> &turn, const std::function<bool()> &isOn);
    /*! One that makes the phone something, without arguments. */
    static SimVerb state(const QString &verb, const QString &description, const std::function<void()> &become,
        const std::function<bool()> &isSo, const QString &sets = {});
    /*! This one, with what it would be told now, and what its arguments can be. */
    [[nodiscard]] SimVerb with(
        const std::function<QVariant()> &value, const QMap<QString, SimChoice> &offered = {}) const;
    /*! A verb that orders a fault. */
    static SimVerb fault(const FaultOrder &order);

    /*! Runs it as \a title, which errors name. */
    void runAs(const QString &title, const QStringList &given) const;
};

/*! Readers of verbs' arguments. Each throws Error, which says what was expected. */
namespace SimArgument {
[[nodiscard]] int integer(const QString &word, int least, int most);
[[nodiscard]] double number(const QString &word, double least, double most);
/*! The place of \a word among \a words. */
[[nodiscard]] int oneOf(const QString &word, const QStringList &words);
} // namespace SimArgument

} // namespace oz::services
