#pragma once

#include <QSocketNotifier>
#include <QString>

#include <csignal>
#include <functional>
#include <memory>

struct screen;

namespace oz::tools {

/*! The whole terminal, for as long as the instance lives: text at places, and the keys that are pressed. */
class TextScreen
{
public:
    enum Style { Plain, Title, Dim, Changed, Selected, Wrong };
    /*! Keys that are no characters. */
    enum Key : char32_t { Up = 0xF0000, Down, PageUp, PageDown, Home, End, Backspace, Enter, Escape, Other };

    /*! Throws CommandError where there is no terminal, or none that is known. Both are called from the event
     * loop. */
    TextScreen(std::function<void(char32_t key)> onKey, std::function<void()> onResize);
    ~TextScreen();
    TextScreen(const TextScreen &) = delete;
    TextScreen &operator=(const TextScreen &) = delete;

    [[nodiscard]] int rows() const;
    [[nodiscard]] int columns() const;

    void clear();
    /*! Writes \a text, which ends with the line at the latest; the column after it. */
    int put(int row, int column, const QString &text, Style style = Plain);
    /*! Fills the rest of the line. */
    void fill(int row, int column, Style style);
    /*! Shows the cursor there, or not at all. */
    void setCursor(int row, int column);
    void hideCursor();
    /*! Shows what was put since clear(). */
    void show();

private:
    [[nodiscard]] static int attributesOf(Style style);
    void readKeys();
    void onSizeChanged();

    std::function<void(char32_t key)> m_onKey;
    std::function<void()> m_onResize;
    ::screen *m_screen = nullptr;
    std::unique_ptr<QSocketNotifier> m_input;
    std::unique_ptr<QSocketNotifier> m_sizeSignal;
};

} // namespace oz::tools
