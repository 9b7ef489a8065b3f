#pragma once

#include <QString>
#include <QStringList>

#include <optional>
#include <vector>

namespace oz::services {

/*! A value of an enumeration, as it stands in the tree and as people call it. */
template <typename Value>
struct ValueWord
{
    Value value;
    const char *published;
    const char *word;
};

/*! The words for an enumeration, in the order in which they are offered. */
template <typename Value>
using WordList = std::vector<ValueWord<Value>>;

/*! The \a text of all values: &ValueWord::word or &ValueWord::published. */
template <typename Value>
[[nodiscard]] QStringList textsIn(const WordList<Value> &words, const char *ValueWord<Value>::*text)
{
    QStringList all;
    for (const auto &each : words)
        all.append(QLatin1String(each.*text));
    return all;
}
template <typename Value>
[[nodiscard]] QStringList wordsIn(const WordList<Value> &words)
{
    return textsIn(words, &ValueWord<Value>::word);
}
template <typename Value>
[[nodiscard]] QStringList publishedIn(const WordList<Value> &words)
{
    return textsIn(words, &ValueWord<Value>::published);
}

/*! The \a text for \a value, which may be an optional one; a null text where it has none. */
template <typename Value, typename Sought>
[[nodiscard]] QString textFor(
    const WordList<Value> &words, const Sought &value, const char *ValueWord<Value>::*text)
{
    for (const auto &each : words) {
        if (value == each.value)
            return QLatin1String(each.*text);
    }
    return {};
}
template <typename Value, typename Sought = Value>
[[nodiscard]] QString wordFor(const WordList<Value> &words, const Sought &value)
{
    return textFor(words, value, &ValueWord<Value>::word);
}
template <typename Value, typename Sought = Value>
[[nodiscard]] QString publishedFor(const WordList<Value> &words, const Sought &value)
{
    return textFor(words, value, &ValueWord<Value>::published);
}

/*! The value that people call \a word; nothing where there is none. */
template <typename Value>
[[nodiscard]] std::optional<Value> valueOf(const WordList<Value> &words, const QString &word)
{
    for (const auto &each : words) {
        if (word == QLatin1String(each.word))
            return each.value;
    }
    return std::nullopt;
}

} // namespace oz::services
