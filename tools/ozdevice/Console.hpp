#pragma once

#include "meta/SignalTap.hpp"
#include "ozdevice/EventLoop.hpp"
#include "ozdevice/FacilityInstance.hpp"
#include "ozdevice/TextScreen.hpp"

#include <oz/PpsObject.hpp>

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>

#include <memory>
#include <vector>

namespace oz::tools {

/*! The phone in the terminal: a line for each facility, what changes as it comes, and keys that change it. */
class Console : public QObject
{
    Q_OBJECT

public:
    /*! Shows \a entries; what goes wrong ends \a loop. Throws CommandError where there is no terminal. */
    Console(const std::vector<const FacilityEntry *> &entries, EventLoop &loop);
    ~Console() override;

    /*! Shows a line at the foot until something else is to be said. */
    void say(const QString &text);

private:
    // A value with its name, and when it changed.
    struct Value
    {
        QString name;
        QString text;
        QString unit;
        qint64 changed = -1; // milliseconds since the console started; -1 while it has not
    };
    // A facility's line.
    struct Line
    {
        std::unique_ptr<FacilityInstance> instance;
        std::unique_ptr<meta::SignalTap> tap;
        std::vector<std::unique_ptr<PpsObject>> objects;
        std::vector<Value> values;
    };
    // Something that can be chosen from a list.
    struct Choice
    {
        QString text;
        QString help;
        std::function<void()> take;
    };
    enum View { All, One, Menu, Prompt };

    void addLine(const FacilityEntry &entry, const QString &selected);
    void findInstances();
    void read(Line *line, bool isFirst = false);
    void onEverySecond();

    void onKey(char32_t key);
    void onPromptKey(char32_t key);
    void move(int steps);
    void choose();
    void openVerbs();
    void openScenarios();
    void openMenu(const QString &title, std::vector<Choice> choices);
    void askFor(const QString &begin, const QString &wanted);
    void tell(const QStringList &words);
    void guarded(const std::function<void()> &body);

    void drawLater();
    void draw();
    void drawAll();
    void drawOne();
    void drawMenu();
    void drawFoot();
    void drawRowsOutside(int first, int count);
    [[nodiscard]] QStringList footLines() const;
    void drawValue(int row, int *column, const Value &value, bool withName);
    [[nodiscard]] bool isFresh(const Value &value) const;
    [[nodiscard]] int bodyRows() const { return std::max(m_screen->rows() - 1 - m_footRows, 1); }
    [[nodiscard]] int firstShown(int selected, int count) const;

    const std::vector<const FacilityEntry *> m_entries;
    EventLoop &m_loop;
    std::unique_ptr<TextScreen> m_screen;
    std::vector<std::unique_ptr<Line>> m_lines;
    QElapsedTimer m_clock;
    QTimer m_second;
    QTimer m_draw;
    View m_view = All;
    int m_selected = 0; // of the lines
    int m_firstValue = 0; // that is shown of one
    QString m_menuTitle;
    std::vector<Choice> m_choices;
    int m_choice = 0;
    QString m_promptBegin;
    QString m_promptWanted;
    QString m_typed;
    QString m_message;
    bool m_isProblem = false;
    int m_footRows = 1;
};

} // namespace oz::tools
