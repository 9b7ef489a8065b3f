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

/*! The words of all values. */
template <typename Value>
[[nodiscard]] QStringList wordsIn(const WordList<Value> &words)
{
    QStringList all;
    for (const auto &each : words)
        all.append(QLatin1String(each.word));
    return all;
}

/*! The published texts for each of \a words. */
template <typename Value>
[[nodiscard]] QStringList publishedIn(const WordList<Value> &words)
{
    QStringList all;
    for (const auto &each : words)
        all.append(QLatin1String(each.published));
    return all;
}

/*! The word for \a value, which may be an optional one; a null text where it has none. */
template <typename Value, typename Sought = Value>
[[nodiscard]] QString wordFor(const WordList<Value> &words, const Sought &value)
{
    for (const auto &each : words) {
        if (value == each.value)
            return QLatin1String(each.word);
    }
    return {};
}

/*! The published text for \a value, likewise. */
template <typename Value, typename Sought = Value>
[[nodiscard]] QString publishedFor(const WordList<Value> &words, const Sought &value)
{
    for (const auto &each : words) {
        if (value == each.value)
            return QLatin1String(each.published);
    }
    return {};
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
