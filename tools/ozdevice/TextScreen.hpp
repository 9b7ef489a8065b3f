#pragma once

#include "SignalWatch.hpp"

#include <QSocketNotifier>
#include <QString>

#include <functional>
#include <memory>
#include <optional>

struct screen;

namespace oz::tools {

/*! The whole terminal during the instance's life: writes text at positions and reports keys. */
class TextScreen
{
public:
    enum Style { Plain, Title, Dim, Changed, Selected };
    /*! Keys that are not characters. */
    enum Key : char32_t { Up = 0xF0000, Down, PageUp, PageDown, Home, End, Escape, Other };

    /*! Throws CommandError if there is no terminal, or its type is unknown. The event loop calls both
     * functions. */
    TextScreen(std::function<void(char32_t key)> onKey, std::function<void()> onResize);
    ~TextScreen();
    TextScreen(const TextScreen &) = delete;
    TextScreen &operator=(const TextScreen &) = delete;

    [[nodiscard]] int rows() const;
    [[nodiscard]] int columns() const;

    void clear();
    /*! Writes \a text, cut off at the end of the line, and returns the column after it. */
    int put(int row, int column, const QString &text, Style style);
    /*! Shows everything written since clear(). */
    void show();

private:
    [[nodiscard]] static int attributesOf(Style style);
    void readKeys();
    void onSizeChanged();

    std::function<void(char32_t key)> m_onKey;
    std::function<void()> m_onResize;
    ::screen *m_screen = nullptr;
    std::unique_ptr<QSocketNotifier> m_input;
    std::optional<arguments::SignalWatch> m_sizeSignal;
};

} // namespace oz::tools
