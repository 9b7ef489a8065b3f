#include "ozdevice/Console.hpp"

#include <oz/DeviceRoot.hpp>

#include <QCoreApplication>

#include <algorithm>

namespace oz::tools {

namespace {

constexpr std::chrono::milliseconds DrawPause{40}; // changes within it are drawn together
constexpr int TitleWidth = 24;
constexpr int NameWidth = 28;
constexpr int AllRows = 100'000; // more than any view has

// A narrow terminal breaks these lines at the gaps.
constexpr QLatin1String Gap("   ");
const QString OverviewKeys = u"up down: select   space: all values   q: quit"_s;
const QString AllValuesKeys = u"up down: scroll   space: back"_s;

} // namespace

Console::Console(const std::vector<const FacilityEntry *> &entries, EventLoop &loop)
    : m_entries(entries), m_loop(loop), m_screen([this](char32_t key) { onKey(key); }, [this] { draw(); }),
      m_foot(OverviewKeys)
{
    m_draw.setSingleShot(true);
    m_draw.callOnTimeout([this] { draw(); });
    m_second.callOnTimeout([this] { m_loop.guard([this] { onEverySecond(); }); });
    m_second.start(std::chrono::seconds(1));
    updateLines();
    drawLater();
}

void Console::say(const QString &text)
{
    m_foot = text;
    drawLater();
}

// Displays and networks come and go.
void Console::updateLines()
{
    std::vector<std::unique_ptr<LiveFacility>> before = std::exchange(m_lines, {});
    for (const FacilityEntry *entry : m_entries) {
        for (const QString &selected : entry->selections()) {
            const auto known = std::find_if(before.begin(), before.end(), [&](const auto &line) {
                return line && &line->instance().entry() == entry && line->instance().selected() == selected;
            });
            m_lines.push_back(known != before.end()
                    ? std::move(*known)
                    : std::make_unique<LiveFacility>(*entry, selected, [this] { drawLater(); }));
        }
    }
    m_selected = std::clamp(m_selected, 0, std::max(0, int(m_lines.size()) - 1));
}

void Console::onEverySecond()
{
    updateLines();
    for (const auto &line : m_lines)
        line->poll();
    draw(); // removes expired highlights too
}

void Console::onKey(char32_t key)
{
    switch (key) {
    case TextScreen::Up:
    case U'k':
        return move(-1);
    case TextScreen::Down:
    case U'j':
        return move(1);
    case TextScreen::PageUp:
        return move(-bodyRows());
    case TextScreen::PageDown:
        return move(bodyRows());
    case TextScreen::Home:
        return move(-AllRows);
    case TextScreen::End:
        return move(AllRows);
    case U' ':
        return showAllValues(!m_showsAllValues);
    case TextScreen::Escape:
        return showAllValues(false);
    case U'q':
        return m_showsAllValues ? showAllValues(false) : QCoreApplication::quit();
    default:
        return;
    }
}

void Console::move(int steps)
{
    if (m_lines.empty())
        return;
    const std::size_t count =
        m_showsAllValues ? m_lines[std::size_t(m_selected)]->values().size() : m_lines.size();
    int &place = m_showsAllValues ? m_firstValue : m_selected;
    place = std::clamp(place + steps, 0, std::max(int(count) - 1, 0));
    drawLater();
}

void Console::showAllValues(bool all)
{
    m_showsAllValues = all;
    m_firstValue = 0;
    say(all ? AllValuesKeys : OverviewKeys);
}

void Console::drawLater()
{
    if (!m_draw.isActive())
        m_draw.start(DrawPause);
}

int Console::bodyRows() const
{
    return std::max(m_screen.rows() - 1 - int(footLines().size()), 1);
}

void Console::draw()
{
    m_screen.clear();
    const bool hasSelection = m_showsAllValues && !m_lines.empty();
    const QString title = hasSelection ? m_lines[std::size_t(m_selected)]->instance().title()
                                       : "the phone under "_L1 + deviceRoot();
    m_screen.put(0, 0, "ozdevice  "_L1 + title, TextScreen::Title);
    if (hasSelection)
        drawAllValues();
    else
        drawOverview();
    const QStringList foot = footLines();
    for (int i = 0; i < foot.size(); ++i)
        m_screen.put(m_screen.rows() - int(foot.size()) + i, 0, foot[i], TextScreen::Dim);
    m_screen.show();
}

void Console::drawOverview()
{
    const int count = int(m_lines.size());
    const int first = std::clamp(m_selected - bodyRows() + 1, 0, std::max(0, count - bodyRows()));
    drawHiddenRows(first, count);
    for (int i = first; i < std::min(count, first + bodyRows()); ++i) {
        const LiveFacility &line = *m_lines[std::size_t(i)];
        const int row = i - first + 1;
        m_screen.put(row, 0, line.instance().title().left(TitleWidth).leftJustified(TitleWidth),
            i == m_selected ? TextScreen::Selected : TextScreen::Plain);
        int column = TitleWidth + 1;
        for (const LiveFacility::Value &value : line.glance()) {
            column = m_screen.put(row, column, value.name + u' ', TextScreen::Dim);
            column = drawValue(row, column, value) + 2;
        }
    }
}

void Console::drawAllValues()
{
    const auto &values = m_lines[std::size_t(m_selected)]->values();
    const int count = int(values.size());
    m_firstValue = std::clamp(m_firstValue, 0, std::max(0, count - bodyRows()));
    drawHiddenRows(m_firstValue, count);
    for (int i = m_firstValue; i < std::min(count, m_firstValue + bodyRows()); ++i) {
        const int row = i - m_firstValue + 1;
        m_screen.put(row, 0, values[std::size_t(i)].name, TextScreen::Dim);
        (void)drawValue(row, NameWidth, values[std::size_t(i)]);
    }
}

int Console::drawValue(int row, int column, const LiveFacility::Value &value)
{
    const int end =
        m_screen.put(row, column, value.text, value.isFresh() ? TextScreen::Changed : TextScreen::Plain);
    return value.unit.isEmpty() ? end : m_screen.put(row, end, u' ' + value.unit, TextScreen::Dim);
}

// Says at the end of the title's line how many of \a count rows are above \a first and below the last one.
void Console::drawHiddenRows(int first, int count)
{
    QStringList texts;
    if (first > 0)
        texts.append(QString::number(first) + " above"_L1);
    if (const int below = count - first - bodyRows(); below > 0)
        texts.append(QString::number(below) + " below"_L1);
    const QString text = "  "_L1 + texts.join(", "_L1);
    if (!texts.isEmpty())
        m_screen.put(0, m_screen.columns() - int(text.size()), text, TextScreen::Title);
}

// The foot in as many lines as it needs, at most half of the screen.
QStringList Console::footLines() const
{
    const QLatin1String gap = m_foot.contains(Gap) ? Gap : " "_L1;
    QStringList lines{QString()};
    for (const QString &piece : m_foot.split(gap)) {
        const bool hasRoom = lines.last().size() + gap.size() + piece.size() <= m_screen.columns();
        if (lines.last().isEmpty())
            lines.last() = piece;
        else if (hasRoom || lines.size() >= m_screen.rows() / 2)
            lines.last() += gap + piece;
        else
            lines.append(piece);
    }
    return lines;
}

} // namespace oz::tools
