#pragma once

#include "ozdevice/EventLoop.hpp"
#include "ozdevice/LiveFacility.hpp"
#include "ozdevice/TextScreen.hpp"

#include <QTimer>

#include <memory>
#include <vector>

namespace oz::tools {

/*! The phone in the terminal, live: a line per facility, or all values of the selected one. */
class Console
{
public:
    /*! Shows \a entries; errors end \a loop. Throws CommandError if there is no terminal. */
    Console(const std::vector<const FacilityEntry *> &entries, EventLoop &loop);

    /*! Shows \a text at the foot, instead of the keys, until the view changes. */
    void say(const QString &text);

private:
    void updateLines();
    void onEverySecond();
    void onKey(char32_t key);
    void move(int steps);
    void showAllValues(bool all);

    void drawLater();
    void draw();
    void drawOverview();
    void drawAllValues();
    [[nodiscard]] int drawValue(int row, int column, const LiveFacility::Value &value);
    void drawHiddenRows(int first, int count);
    [[nodiscard]] QStringList footLines() const;
    [[nodiscard]] int bodyRows() const;

    const std::vector<const FacilityEntry *> m_entries;
    EventLoop &m_loop;
    TextScreen m_screen;
    std::vector<std::unique_ptr<LiveFacility>> m_lines;
    QTimer m_second;
    QTimer m_draw;
    bool m_showsAllValues = false; // those of the selected line
    int m_selected = 0;
    int m_firstValue = 0; // the one at the top while all are shown
    QString m_foot;
};

} // namespace oz::tools
