// The library's macros have the names of members of other classes.
#define NCURSES_NOMACROS 1
#define NCURSES_WIDECHAR 1

#include "ozdevice/TextScreen.hpp"

#include "facilities/CommandError.hpp"

#include <oz/PrintableText.hpp>

#include <QCoreApplication>

#include <curses.h>
#include <cwchar>
#include <sys/ioctl.h>
#include <unistd.h>

namespace oz::tools {

namespace {

constexpr int EscapeDelay = 50; // milliseconds in which the rest of a key's sequence arrives

// The numbers of the colour pairs.
enum Pair : short { TitlePair = 1, ChangedPair };

TextScreen::Key keyOf(wint_t code)
{
    switch (code) {
    case KEY_UP:
        return TextScreen::Up;
    case KEY_DOWN:
        return TextScreen::Down;
    case KEY_PPAGE:
        return TextScreen::PageUp;
    case KEY_NPAGE:
        return TextScreen::PageDown;
    case KEY_HOME:
        return TextScreen::Home;
    case KEY_END:
        return TextScreen::End;
    default:
        return TextScreen::Other;
    }
}

} // namespace

TextScreen::TextScreen(std::function<void(char32_t)> onKey, std::function<void()> onResize)
    : m_onKey(std::move(onKey)), m_onResize(std::move(onResize))
{
    if (!::isatty(STDIN_FILENO) || !::isatty(STDOUT_FILENO))
        throw CommandError(WrongUse, u"this needs a terminal; `ozdevice watch` prints changes anywhere"_s);
    const QByteArray terminal = qgetenv("TERM");
    m_screen = ::newterm(nullptr, stdout, stdin);
    if (!m_screen) {
        throw CommandError(
            Failed, "the terminal '"_L1 + QString::fromLocal8Bit(terminal) + "' is not known here"_L1);
    }
    ::cbreak();
    ::noecho();
    ::nonl();
    ::set_escdelay(EscapeDelay);
    ::keypad(::stdscr, TRUE);
    ::nodelay(::stdscr, TRUE);
    ::curs_set(0);
    if (qEnvironmentVariableIsEmpty("NO_COLOR") && ::has_colors()) {
        ::start_color();
        ::use_default_colors();
        ::init_pair(TitlePair, COLOR_CYAN, -1);
        ::init_pair(ChangedPair, COLOR_YELLOW, -1);
    }
    m_input = std::make_unique<QSocketNotifier>(STDIN_FILENO, QSocketNotifier::Read);
    QObject::connect(m_input.get(), &QSocketNotifier::activated, [this] { readKeys(); });
    m_sizeSignal.emplace({SIGWINCH}, [this](int) { onSizeChanged(); });
}

TextScreen::~TextScreen()
{
    m_sizeSignal->unblock();
    ::endwin();
    ::delscreen(m_screen);
}

int TextScreen::rows() const
{
    return ::getmaxy(::stdscr);
}

int TextScreen::columns() const
{
    return ::getmaxx(::stdscr);
}

void TextScreen::clear()
{
    ::werase(::stdscr);
}

int TextScreen::attributesOf(Style style)
{
    const auto pair = [](Pair number) { return COLOR_PAIR(number); };
    switch (style) {
    case Plain:
        return A_NORMAL;
    case Title:
        return int(A_BOLD | pair(TitlePair));
    case Dim:
        return A_DIM;
    case Changed:
        return int(A_BOLD | pair(ChangedPair));
    case Selected:
        return A_REVERSE;
    }
    return A_NORMAL;
}

int TextScreen::put(int row, int column, const QString &text, Style style)
{
    if (row < 0 || row >= rows())
        return column;
    ::wattrset(::stdscr, attributesOf(style));
    for (const char32_t character : printableText(text).toUcs4()) {
        wchar_t shown[] = {wchar_t(character), 0};
        int width = ::wcwidth(shown[0]);
        if (width < 0) { // not in this locale
            shown[0] = L'?';
            width = 1;
        }
        if (column + width > columns())
            break;
        ::mvwaddwstr(::stdscr, row, column, shown);
        column += width;
    }
    ::wattrset(::stdscr, A_NORMAL);
    return column;
}

void TextScreen::show()
{
    ::wrefresh(::stdscr);
}

void TextScreen::readKeys()
{
    wint_t read = 0;
    for (;;) {
        const int kind = ::wget_wch(::stdscr, &read);
        if (kind == ERR)
            break;
        if (kind != KEY_CODE_YES)
            m_onKey(read == 27 ? char32_t(Escape) : read);
        else if (read == KEY_RESIZE)
            m_onResize();
        else
            m_onKey(keyOf(read));
    }
    // The descriptor of a terminal that has gone stays readable.
    int waiting = 0;
    if (::ioctl(STDIN_FILENO, FIONREAD, &waiting) < 0 || !::isatty(STDIN_FILENO)) {
        m_input->setEnabled(false);
        QCoreApplication::quit();
    }
}

void TextScreen::onSizeChanged()
{
    winsize size{};
    if (::ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_row > 0 && size.ws_col > 0)
        ::resizeterm(size.ws_row, size.ws_col);
    ::clearok(::stdscr, TRUE);
    m_onResize();
}

} // namespace oz::tools
