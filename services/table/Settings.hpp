#pragma once

#include "source/Error.hpp"
#include "table/ValueType.hpp"
#include "table/WordList.hpp"

#include <chrono>
#include <cmath>
#include <functional>
#include <initializer_list>
#include <type_traits>
#include <utility>
#include <vector>

namespace oz::services {

/*! A value that does not fit the other settings. */
class WrongSetting : public Error
{
public:
    using Error::Error;
};

/*! A way to tell a setting: a verb that takes its value, or one that sets one value. */
struct Order
{
    QString verb;
    QString help;
    QString argument = {}; //!< its name; "[NAME]" for one that may be left out, and is empty then
    QVariant value = {}; //!< that it sets where it takes no argument
    QString formerVerb = {}; //!< which goes on working, and is shown nowhere
};

/*! Gives the present value of one of a facility's fields. */
using SeenValues = std::function<QVariant(const char *field)>;

/*! How a recording knows what a setting is. By default it does not. */
struct Recording
{
    const char *field = ""; //!< that tells it
    /*! Tells it from several fields; nothing where it is not seen. */
    std::function<std::optional<QVariant>(const SeenValues &seen)> value = {};
    const char *mask = ""; //!< what stands for a value that tells who somebody is, with a number behind it
    int keptDigits = -1; //!< of a number that does, how many of its first digits stay
    QVariant fixed = {}; //!< what it is in each recording, whatever is seen

    [[nodiscard]] bool isSome() const { return *field || value || fixed.isValid(); }
};

/*! Something that a part of the simulated phone can be told, by its file and while it runs. */
struct Setting
{
    QString key; //!< in the phone's file
    ValueType type;
    QVariant initial; //!< where the file does not say
    QString help; //!< what it is
    std::vector<Order> orders; //!< none where the file alone can say
    Recording recording;
    bool isKept; //!< for the next daemon, as everything is that can be told while the phone runs
    std::function<QVariant()> get;
    std::function<void(const QVariant &value)> set; //!< throws WrongSetting
};

/*! How a value of a \a Owner is read and set. */
template <typename Owner>
struct SettingColumn
{
    ValueType type;
    std::function<QVariant(const Owner &owner)> get;
    std::function<void(Owner &owner, const QVariant &value)> set;
    bool isKept = false;

    /*! Offers no more than these numbers for a choice. */
    [[nodiscard]] SettingColumn offering(double least, double most, double step) const
    {
        SettingColumn column = *this;
        column.type.offer = ValueType::Offer{least, most, step};
        return column;
    }
    /*! It changes while the phone runs, though no order of its own tells it. */
    [[nodiscard]] SettingColumn kept() const
    {
        SettingColumn column = *this;
        column.isKept = true;
        return column;
    }
    /*! It cannot be unknown, though what holds it could be. */
    [[nodiscard]] SettingColumn alwaysKnown() const
    {
        SettingColumn column = *this;
        column.type.mayBeUnknown = false;
        return column;
    }
    /*! No error shows it: it tells who somebody is. */
    [[nodiscard]] SettingColumn asPrivate() const
    {
        SettingColumn column = *this;
        column.type.isPrivate = true;
        return column;
    }
    [[nodiscard]] SettingColumn by(void (*setter)(Owner &owner, const QVariant &value)) const
    {
        SettingColumn column = *this;
        column.set = setter;
        return column;
    }
    /*! Lets \a setter do it, which is given the value and may throw WrongSetting. */
    template <typename Value>
    [[nodiscard]] SettingColumn by(void (Owner::*setter)(Value)) const
    {
        SettingColumn column = *this;
        column.set = [setter](Owner &owner, const QVariant &value) {
            (owner.*setter)(value.value<std::remove_cvref_t<Value>>());
        };
        return column;
    }
};

/*!
 * The columns of a \a Owner, by what holds the values: a member, or a function that gives a reference to one.
 * An optional one may be unknown.
 */
template <typename Owner>
class SettingColumns
{
    template <typename Member>
    using Held = std::remove_cvref_t<std::invoke_result_t<Member, Owner &>>;
    template <typename Value>
    struct Optional : std::false_type
    {
        using Known = Value;
    };
    template <typename Value>
    struct Optional<std::optional<Value>> : std::true_type
    {
        using Known = Value;
    };
    template <typename Member>
    using Known = typename Optional<Held<Member>>::Known;

public:
    template <typename Member>
    static SettingColumn<Owner> truth(Member member)
    {
        return plain({ValueType::Truth}, member);
    }
    template <typename Member>
    static SettingColumn<Owner> number(Member member, double least, double most, const char *unit = "")
    {
        ValueType type{ValueType::Number, QString::fromUtf8(unit)};
        type.isWhole = std::is_integral_v<Known<Member>>;
        type.least = least;
        type.most = most;
        return plain(type, member);
    }
    template <typename Member>
    static SettingColumn<Owner> text(Member member)
    {
        return plain({ValueType::Text}, member);
    }
    /*! Text of a \a form, a regular expression, which \a formText says in words. */
    template <typename Member>
    static SettingColumn<Owner> text(Member member, const char *form, const char *formText)
    {
        ValueType type{ValueType::Text};
        type.form = QLatin1String(form);
        type.formText = QLatin1String(formText);
        return plain(type, member);
    }
    /*! The address of a network device. */
    template <typename Member>
    static SettingColumn<Owner> hardwareAddress(Member member)
    {
        return text(
            member, "([0-9A-Fa-f]{2}:){5}[0-9A-Fa-f]{2}", "a hardware address such as \"02:00:00:00:00:01\"");
    }
    /*! Text that may be left out: null is none. */
    template <typename Member>
    static SettingColumn<Owner> textOrNone(Member member)
    {
        SettingColumn<Owner> column = text(member);
        column.type.mayBeUnknown = true;
        column.set = [member](Owner &owner, const QVariant &value) {
            std::invoke(member, owner) = value.toString();
        };
        return column;
    }
    /*! Some of \a words. */
    template <typename Member>
    static SettingColumn<Owner> list(Member member, const QStringList &words)
    {
        return plain({ValueType::List, {}, words}, member);
    }
    /*! A time, which the file gives in seconds. */
    template <typename Member>
    static SettingColumn<Owner> seconds(Member member, double least, double most)
    {
        ValueType type{ValueType::Number, QStringLiteral("s")};
        type.least = least;
        type.most = most;
        return {type,
            [member](
                const Owner &owner) { return QVariant(double(std::invoke(member, owner).count()) / 1000); },
            [member](Owner &owner, const QVariant &value) {
                std::invoke(member, owner) = std::chrono::milliseconds(std::llround(value.toDouble() * 1000));
            }};
    }
    /*! The words for an enumeration; of an optional one, \a unknown is the word for what is not known. */
    template <typename Member>
    static SettingColumn<Owner> words(
        Member member, const WordList<Known<Member>> &words, const char *unknown = "")
    {
        ValueType type{ValueType::Word, {}, wordsIn(words)};
        const auto get = [member, words, unknown](const Owner &owner) {
            const QString word = wordFor(words, std::invoke(member, owner));
            if (word.isNull())
                return *unknown ? QVariant(QString::fromLatin1(unknown)) : QVariant();
            return QVariant(word);
        };
        const auto set = [member, words](Owner &owner, const QVariant &value) {
            const auto known = valueOf(words, value.toString());
            std::invoke(member, owner) = known ? Held<Member>(*known) : Held<Member>();
        };
        if (*unknown)
            type.words.append(QLatin1String(unknown));
        else
            type.mayBeUnknown = Optional<Held<Member>>::value;
        return {type, get, set};
    }

private:
    template <typename Member>
    static SettingColumn<Owner> plain(ValueType type, Member member)
    {
        type.mayBeUnknown = Optional<Held<Member>>::value;
        return {type,
            [member](const Owner &owner) {
                const Held<Member> &value = std::invoke(member, owner);
                if constexpr (Optional<Held<Member>>::value)
                    return value ? QVariant::fromValue(*value) : QVariant();
                else
                    return QVariant::fromValue(value);
            },
            [member](Owner &owner, const QVariant &value) {
                if (Optional<Held<Member>>::value && !value.isValid())
                    std::invoke(member, owner) = Held<Member>();
                else
                    std::invoke(member, owner) = value.value<Known<Member>>();
            }};
    }
};

/*! The settings of a \a Owner, in the order of its file. */
template <typename Owner>
class Settings
{
public:
    struct Row
    {
        const char *key;
        SettingColumn<Owner> column;
        QVariant initial;
        const char *help;
        std::vector<Order> orders = {};
        Recording recording = {};
    };

    Settings(std::initializer_list<Row> rows) : m_rows(rows) { }

    /*! Those of \a owner; where that is none, what they are like. */
    [[nodiscard]] std::vector<Setting> of(Owner *owner) const
    {
        std::vector<Setting> settings;
        for (const Row &row : m_rows) {
            settings.push_back({QLatin1String(row.key), row.column.type, row.initial,
                QString::fromUtf8(row.help), row.orders, row.recording,
                row.column.isKept || !row.orders.empty(), [owner, &row] { return row.column.get(*owner); },
                [owner, &row](const QVariant &value) { row.column.set(*owner, value); }});
        }
        return settings;
    }

private:
    std::vector<Row> m_rows;
};

/*! The orders of a setting that is true or false, by a verb for each. */
[[nodiscard]] std::vector<Order> either(
    const char *verbOfTrue, const char *helpOfTrue, const char *verbOfFalse, const char *helpOfFalse);
/*! \a orders, which had these verbs before. */
[[nodiscard]] std::vector<Order> formerly(
    std::vector<Order> orders, std::initializer_list<const char *> verbs);
/*! A verb for one word of a setting. */
struct WordOrder
{
    const char *verb;
    const char *help;
    const char *word = nullptr; //!< where that is not the verb
};
/*! The orders of a setting with words, by a verb for each. */
[[nodiscard]] std::vector<Order> eachWord(std::initializer_list<WordOrder> verbs);
/*! The order of a setting that is told "on" or "off". */
[[nodiscard]] std::vector<Order> onOff(const char *verb, const char *help);
/*! The order that takes the value as its \a argument. */
[[nodiscard]] std::vector<Order> told(const char *verb, const char *argument, const char *help);

} // namespace oz::services
