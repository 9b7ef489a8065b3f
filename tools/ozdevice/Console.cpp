#include "ozdevice/Console.hpp"

#include "meta/MetaDescription.hpp"
#include "meta/MetaText.hpp"
#include "ozdevice/DaemonAccess.hpp"
#include "ozdevice/PlayedScenario.hpp"

#include <oz/DeviceRoot.hpp>

#include <QCoreApplication>
#include <QHash>
#include <QProcess>

#include <algorithm>

namespace oz::tools {

namespace {

constexpr int FreshFor = 3000; // milliseconds in which a change is shown as one
constexpr int DrawPause = 40; // milliseconds in which changes are drawn together
constexpr int TitleWidth = 24;

// Keys and what they do, which a narrow terminal breaks into lines at the gaps.
const QString Ready =
    QStringLiteral("up down: select   enter: tell it   space: all values   p: play   q: quit");
constexpr QLatin1String Gap("   ");

// What is worth a glance, in this order; the rest is there when a facility is looked at alone.
QStringList glanceOf(const QString &facility)
{
    static const QHash<QString, QString> names{
        {QStringLiteral("sdcard"), QStringLiteral("state activity")},
        {QStringLiteral("battery"), QStringLiteral("level chargingState temperature condition")},
        {QStringLiteral("hardware"), QStringLiteral("deviceName modelName")},
        {QStringLiteral("device"), QStringLiteral("orientation activityState")},
        {QStringLiteral("simcard"), QStringLiteral("state")},
        {QStringLiteral("radio"), QStringLiteral("poweredOn activeTechnologies dataEnabled dataRoaming")},
        {QStringLiteral("cellular-network"), QStringLiteral("signalStrength technology displayName roaming")},
        {QStringLiteral("data-profile"), QStringLiteral("connectionState valid")},
        {QStringLiteral("display"), QStringLiteral("attached displayName pixelSize")},
        {QStringLiteral("led"), QStringLiteral("red green blue flashes")},
        {QStringLiteral("vibration"), QStringLiteral("running runs")},
        {QStringLiteral("wifi-direct"), QStringLiteral("connectionState scanning enabled")},
        {QStringLiteral("miracast"), QStringLiteral("connectionState displayState status")},
        {QStringLiteral("network"), QStringLiteral("bytesReceived bytesSent")},
    };
    return names.value(facility).split(u' ', Qt::SkipEmptyParts);
}

} // namespace

Console::Console(const std::vector<const FacilityEntry *> &entries, EventLoop &loop)
    : m_entries(entries), m_loop(loop),
      m_screen(std::make_unique<TextScreen>(
          [this](char32_t key) { guarded([&] { onKey(key); }); }, [this] { draw(); }))
{
    m_clock.start();
    m_draw.setSingleShot(true);
    connect(&m_draw, &QTimer::timeout, this, &Console::draw);
    connect(&m_second, &QTimer::timeout, this, [this] { m_loop.guard([this] { onEverySecond(); }); });
    findInstances();
    m_second.start(std::chrono::seconds(1));
    say(Ready);
}

Console::~Console() = default;

void Console::say(const QString &text)
{
    m_message = text;
    m_isProblem = false;
    drawLater();
}

// Displays and networks come and go.
void Console::findInstances()
{
    struct Wanted
    {
        const FacilityEntry *entry;
        QString selected;
    };
    std::vector<Wanted> wanted;
    for (const FacilityEntry *entry : m_entries) {
        if (!entry->instances) {
            wanted.push_back({entry, {}});
            continue;
        }
        for (const QString &selected : entry->instances())
            wanted.push_back({entry, selected});
    }
    const bool isSame = std::equal(wanted.begin(), wanted.end(), m_lines.begin(), m_lines.end(),
        [](const Wanted &one, const auto &line) {
            return one.entry == &line->instance->entry() && one.selected == line->instance->selected();
        });
    if (isSame)
        return;
    std::vector<std::unique_ptr<Line>> before = std::move(m_lines);
    m_lines.clear();
    for (const Wanted &one : wanted) {
        const auto known = std::find_if(before.begin(), before.end(), [&](const auto &line) {
            return line && one.entry == &line->instance->entry()
                && one.selected == line->instance->selected();
        });
        if (known != before.end())
            m_lines.push_back(std::move(*known));
        else
            addLine(*one.entry, one.selected);
    }
    m_selected = std::clamp(m_selected, 0, std::max(0, int(m_lines.size()) - 1));
}

void Console::addLine(const FacilityEntry &entry, const QString &selected)
{
    Line &line = *m_lines.emplace_back(std::make_unique<Line>());
    line.instance = std::make_unique<FacilityInstance>(entry, selected, FacilityInstance::MayComeLater);
    const auto changed = [this, &line] {
        read(&line);
        drawLater();
    };
    line.tap = std::make_unique<meta::SignalTap>(
        line.instance->object(), [changed](const QMetaMethod &, const QVariantList &) { changed(); });
    // Where an object of the class tells of its own requests alone, the tree tells of everybody's.
    for (const QString &path : entry.activity.isEmpty() ? QStringList() : entry.objects + entry.activity) {
        if (path == entry.service)
            continue;
        auto object = std::make_unique<PpsObject>(path);
        if (!object->open(PpsOpenMode::Subscribe))
            continue;
        connect(object.get(), &PpsObject::readyRead, this, changed);
        line.objects.push_back(std::move(object));
    }
    read(&line, true);
}

void Console::read(Line *line, bool isFirst)
{
    std::vector<Value> values;
    for (const auto &object : line->objects) {
        const QVariantMap objects = PpsObject::decode(object->read());
        const QVariantMap attributes = objects.isEmpty() ? QVariantMap() : objects.first().toMap();
        for (auto attribute = attributes.cbegin(); attribute != attributes.cend(); ++attribute)
            values.push_back({attribute.key(), meta::valueText(*attribute), {}});
    }
    for (const QMetaProperty &property : meta::propertiesOf(line->instance->entry().type)) {
        const QString name = QString::fromLatin1(property.name());
        const QString text = meta::valueText(property.read(line->instance->object()));
        const Measure measure = line->instance->entry().measures.value(name);
        values.push_back({name, text, text == measure.unknown ? QString() : measure.unit});
    }
    for (Value &value : values) {
        const auto before = std::find_if(line->values.begin(), line->values.end(),
            [&](const Value &each) { return each.name == value.name; });
        if (before != line->values.end())
            value.changed = before->text == value.text ? before->changed : m_clock.elapsed();
        else if (!isFirst)
            value.changed = m_clock.elapsed();
    }
    line->values = std::move(values);
}

void Console::onEverySecond()
{
    findInstances();
    for (const auto &line : m_lines) {
        if (const auto &readAnew = line->instance->entry().readAnew) {
            (void)readAnew(line->instance->object());
            read(line.get());
        }
    }
    draw(); // also what is not fresh any more
}

void Console::guarded(const std::function<void()> &body)
{
    m_loop.guard([&] {
        try {
            body();
        } catch (const CommandError &error) {
            m_message = QString::fromUtf8(error.what());
            m_isProblem = true;
        }
    });
    drawLater();
}

void Console::onKey(char32_t key)
{
    if (m_view == Prompt)
        return onPromptKey(key);
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
        return move(-100'000);
    case TextScreen::End:
        return move(100'000);
    case TextScreen::Enter:
        return choose();
    case TextScreen::Escape:
    case U'q':
        if (m_view == All && key == U'q')
            return QCoreApplication::quit();
        m_view = All;
        return say(Ready);
    case U' ':
        m_view = m_view == One ? All : One;
        m_firstValue = 0;
        return say(m_view == One ? QStringLiteral("up down: scroll   enter: tell it   space: back") : Ready);
    case U'p':
        return openScenarios();
    default:
        return;
    }
}

void Console::move(int steps)
{
    int &place = m_view == Menu ? m_choice : m_view == One ? m_firstValue : m_selected;
    const int count = m_view == Menu ? int(m_choices.size())
        : m_lines.empty()            ? 0
        : m_view == One              ? int(m_lines[std::size_t(m_selected)]->values.size())
                                     : int(m_lines.size());
    place = std::clamp(place + steps, 0, std::max(count - 1, 0));
}

void Console::choose()
{
    if (m_view != Menu)
        return openVerbs();
    if (m_choices.empty())
        return;
    const auto take = m_choices[std::size_t(m_choice)].take;
    m_view = All;
    say(Ready);
    take();
}

// What the selected facility's part of the simulated phone can be told.
void Console::openVerbs()
{
    if (m_lines.empty())
        return;
    const FacilityInstance &instance = *m_lines[std::size_t(m_selected)]->instance;
    const QVariantMap parts =
        askDaemon(QStringLiteral("describe")).toMap().value(QStringLiteral("simulated")).toMap();
    std::vector<Choice> choices;
    for (const QString &part : instance.entry().fedParts()) {
        const QVariantMap described = parts.value(part).toMap();
        QStringList instances = described.value(QStringLiteral("instances")).toStringList();
        if (instances.contains(instance.selected()))
            instances = QStringList{instance.selected()};
        if (instances.isEmpty())
            instances = QStringList{QString()};
        for (const QString &name : std::as_const(instances)) {
            for (const QVariant &each : described.value(QStringLiteral("verbs")).toList()) {
                const QVariantMap verb = each.toMap();
                const QStringList arguments = verb.value(QStringLiteral("arguments")).toStringList();
                QStringList words{part};
                if (!name.isEmpty())
                    words.append(name);
                words.append(verb.value(QStringLiteral("name")).toString());
                choices.push_back({(words + arguments).join(u' '),
                    verb.value(QStringLiteral("help")).toString(), [this, words, arguments] {
                        if (arguments.isEmpty())
                            tell(words);
                        else
                            askFor(words.join(u' '), arguments.join(u' '));
                    }});
            }
        }
    }
    if (choices.empty()) {
        throw CommandError(Failed,
            instance.title()
                + QLatin1String(" is not fed by the simulated phone, so it cannot be told anything"));
    }
    openMenu(instance.title(), std::move(choices));
}

void Console::openScenarios()
{
    std::vector<Choice> choices;
    for (const QStringList &row : installedScenarios()) {
        choices.push_back({row[0], row[1], [this, name = row[0]] {
                               const QVariantMap order{{QStringLiteral("file"), scenarioFile(name)}};
                               (void)askDaemon(QStringLiteral("play"), order);
                               say(QLatin1String("playing ") + name);
                           }});
    }
    choices.push_back({QStringLiteral("stop"), QStringLiteral("ends the scenario that is playing"), [this] {
                           (void)askDaemon(QStringLiteral("stop-scenario"));
                           say(QStringLiteral("stopped"));
                       }});
    openMenu(QStringLiteral("play a scenario"), std::move(choices));
}

void Console::openMenu(const QString &title, std::vector<Choice> choices)
{
    m_menuTitle = title;
    m_choices = std::move(choices);
    m_choice = 0;
    m_view = Menu;
    say(QStringLiteral("up down: select   enter: do it   escape: back"));
}

void Console::askFor(const QString &begin, const QString &wanted)
{
    m_promptBegin = begin;
    m_promptWanted = wanted;
    m_typed.clear();
    m_view = Prompt;
}

void Console::onPromptKey(char32_t key)
{
    if (key == TextScreen::Escape || key == TextScreen::Enter) {
        m_view = All;
        say(Ready);
        if (key == TextScreen::Enter)
            tell(m_promptBegin.split(u' ') + QProcess::splitCommand(m_typed));
    } else if (key == TextScreen::Backspace) {
        m_typed.chop(1);
    } else if (key >= 0x20 && key < TextScreen::Up) {
        m_typed += QString::fromUcs4(&key, 1);
    }
}

void Console::tell(const QStringList &words)
{
    (void)askDaemon(QStringLiteral("sim"),
        QVariantMap{{QStringLiteral("facility"), words[0]}, {QStringLiteral("verb"), words[1]},
            {QStringLiteral("arguments"), words.mid(2)}});
    say(words.join(u' ') + QLatin1String(": done"));
}

void Console::drawLater()
{
    if (!m_draw.isActive())
        m_draw.start(DrawPause);
}

bool Console::isFresh(const Value &value) const
{
    return value.changed >= 0 && m_clock.elapsed() - value.changed < FreshFor;
}

void Console::draw()
{
    m_screen->clear();
    m_screen->hideCursor();
    m_footRows = int(footLines().size());
    const QString title = m_view == Menu    ? m_menuTitle
        : m_view == One && !m_lines.empty() ? m_lines[std::size_t(m_selected)]->instance->title()
                                            : QLatin1String("the phone under ") + deviceRoot();
    m_screen->put(0, 0, QLatin1String("ozdevice  ") + title, TextScreen::Title);
    if (m_view == Menu)
        drawMenu();
    else if (m_view == One)
        drawOne();
    else
        drawAll();
    drawFoot();
    m_screen->show();
}

int Console::firstShown(int selected, int count) const
{
    return std::clamp(selected - bodyRows() + 1, 0, std::max(0, count - bodyRows()));
}

void Console::drawAll()
{
    const int first = firstShown(m_selected, int(m_lines.size()));
    drawRowsOutside(first, int(m_lines.size()));
    for (int row = 0; row < bodyRows() && first + row < int(m_lines.size()); ++row) {
        const Line &line = *m_lines[std::size_t(first + row)];
        const bool isSelected = first + row == m_selected;
        m_screen->put(row + 1, 0, line.instance->title().left(TitleWidth).leftJustified(TitleWidth),
            isSelected ? TextScreen::Selected : TextScreen::Plain);
        int column = TitleWidth + 1;
        QStringList names = glanceOf(line.instance->entry().name);
        // A change is worth a glance whatever it is.
        for (const Value &value : line.values) {
            if (isFresh(value) && !names.contains(value.name))
                names.append(value.name);
        }
        for (const QString &name : std::as_const(names)) {
            const auto value = std::find_if(
                line.values.begin(), line.values.end(), [&](const Value &each) { return each.name == name; });
            if (value != line.values.end())
                drawValue(row + 1, &column, *value, true);
        }
    }
}

void Console::drawValue(int row, int *column, const Value &value, bool withName)
{
    if (withName)
        *column = m_screen->put(row, *column, value.name + u' ', TextScreen::Dim);
    *column =
        m_screen->put(row, *column, value.text, isFresh(value) ? TextScreen::Changed : TextScreen::Plain);
    if (!value.unit.isEmpty())
        *column = m_screen->put(row, *column, u' ' + value.unit, TextScreen::Dim);
    *column += 2;
}

void Console::drawOne()
{
    if (m_lines.empty())
        return;
    const Line &line = *m_lines[std::size_t(m_selected)];
    const int first = std::clamp(m_firstValue, 0, std::max(0, int(line.values.size()) - bodyRows()));
    m_firstValue = first;
    drawRowsOutside(first, int(line.values.size()));
    for (int row = 0; row < bodyRows() && first + row < int(line.values.size()); ++row) {
        const Value &value = line.values[std::size_t(first + row)];
        m_screen->put(row + 1, 0, value.name, TextScreen::Dim);
        int column = 28;
        drawValue(row + 1, &column, value, false);
    }
}

void Console::drawMenu()
{
    const int first = firstShown(m_choice, int(m_choices.size()));
    drawRowsOutside(first, int(m_choices.size()));
    for (int row = 0; row < bodyRows() && first + row < int(m_choices.size()); ++row) {
        const Choice &choice = m_choices[std::size_t(first + row)];
        const bool isSelected = first + row == m_choice;
        const int column = m_screen->put(
            row + 1, 0, choice.text.leftJustified(30), isSelected ? TextScreen::Selected : TextScreen::Plain);
        m_screen->put(row + 1, column + 1, choice.help, TextScreen::Dim);
    }
}

// At the end of the title's line, how many rows there is no room for, of \a count from \a first on.
void Console::drawRowsOutside(int first, int count)
{
    QStringList texts;
    if (first > 0)
        texts.append(QString::number(first) + QLatin1String(" above"));
    if (const int below = count - first - bodyRows(); below > 0)
        texts.append(QString::number(below) + QLatin1String(" below"));
    const QString text = QLatin1String("  ") + texts.join(QLatin1String(", "));
    if (!texts.isEmpty())
        m_screen->put(0, m_screen->columns() - int(text.size()), text, TextScreen::Title);
}

// The message in as many lines as it takes, at most half of the screen.
QStringList Console::footLines() const
{
    if (m_view == Prompt)
        return {QString()};
    const QLatin1String gap = m_message.contains(Gap) ? Gap : QLatin1String(" ");
    QStringList lines{QString()};
    for (const QString &piece : m_message.split(gap)) {
        const bool hasRoom = lines.last().size() + gap.size() + piece.size() <= m_screen->columns();
        if (lines.last().isEmpty())
            lines.last() = piece;
        else if (hasRoom || lines.size() >= m_screen->rows() / 2)
            lines.last() += gap + piece;
        else
            lines.append(piece);
    }
    return lines;
}

void Console::drawFoot()
{
    const int row = m_screen->rows() - m_footRows;
    if (m_view != Prompt) {
        const QStringList lines = footLines();
        for (int i = 0; i < lines.size(); ++i)
            m_screen->put(row + i, 0, lines[i], m_isProblem ? TextScreen::Wrong : TextScreen::Dim);
        return;
    }
    int column = m_screen->put(row, 0, m_promptBegin + u' ', TextScreen::Title);
    column = m_screen->put(row, column, m_typed);
    m_screen->put(row, column + 1, u'(' + m_promptWanted + u')', TextScreen::Dim);
    m_screen->setCursor(row, column);
}

} // namespace oz::tools
