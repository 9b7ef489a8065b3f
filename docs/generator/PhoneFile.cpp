#include "PhoneFile.hpp"

#include "Tables.hpp"
#include "phone/SimulatedPhone.hpp"
#include "source/Error.hpp"

#include <QRegularExpression>
#include <QSet>

#include <algorithm>

namespace oz::pages {

using namespace services;

namespace {

constexpr int Width = 120;
const QString Indentation(8, u' ');
const QString CommentMark = QStringLiteral("// ");

// A key of a section, with the lines that say its value, and the comments before it.
struct Entry
{
    QString key;
    QStringList lines;
};

// A line's JSON and its comment.
std::pair<QString, QString> splitComment(const QString &line)
{
    static const QRegularExpression pattern(
        QStringLiteral(R"x(^((?:[^"/]|"(?:\\.|[^"\\])*")*?)\s*(?://\s*(.*))?$)x"));
    const auto match = pattern.match(line);
    return {match.captured(1), match.captured(2)};
}

// How many more brackets a line opens than it closes.
int depthOf(const QString &line)
{
    static const QRegularExpression texts(QStringLiteral(R"x("(?:\\.|[^"\\])*")x"));
    const QString json = splitComment(line).first.remove(texts);
    return int(json.count(u'{') + json.count(u'[') - json.count(u'}') - json.count(u']'));
}

QString keyIn(const QString &line)
{
    static const QRegularExpression pattern(QStringLiteral(R"x(^\s*"([^"]+)": )x"));
    return pattern.match(line).captured(1);
}

bool isComment(const QString &line)
{
    return line.trimmed().startsWith(QLatin1String("//"));
}

// Words in lines that are no longer than Width, each begun by \a start.
QStringList wrapped(const QString &text, const QString &start)
{
    QStringList lines;
    for (const QString &word : text.split(u' ')) {
        if (lines.isEmpty() || lines.last().size() + 1 + word.size() > Width)
            lines.append(start + word);
        else
            lines.last() += u' ' + word;
    }
    return lines;
}

// The help of a key and the values that it takes; \a withDefault adds the default, if the help does not name
// it.
QString commentOf(const Setting &setting, bool withDefault)
{
    const ValueType &type = setting.type;
    const bool isAny = type.kind == ValueType::Truth || type.kind == ValueType::List
        || (type.kind == ValueType::Text && type.form.isEmpty());
    QStringList notes;
    if (!isAny)
        notes.append(accepted(type));
    else if (type.mayBeUnknown)
        notes.append(QStringLiteral("or null"));
    if (withDefault && setting.initial.isValid() && !setting.help.contains(QLatin1String("if left out")))
        notes.append(QLatin1String("default ") + jsonText(setting.initial));
    return notes.isEmpty()
        ? setting.help
        : QString(setting.help + QLatin1String(" (") + notes.join(QLatin1String("; ")) + u')');
}

// A line with its comment behind it, or before it if the line would be too long.
QStringList commented(const QString &json, const QString &comment)
{
    const QString line = json + u' ' + CommentMark + comment;
    if (line.size() <= Width)
        return {line};
    const QString indentation = json.first(json.size() - json.trimmed().size());
    return wrapped(comment, indentation + CommentMark) << json;
}

Entry entryOf(const Setting &setting)
{
    const QString value = jsonText(setting.initial);
    const QString json = Indentation + u'"' + setting.key + QLatin1String("\": ");
    if (json.size() + value.size() < Width)
        return {setting.key, commented(json + value, commentOf(setting, false))};
    QStringList lines = commented(json + u'[', commentOf(setting, false));
    lines += wrapped(value.sliced(1).chopped(1), Indentation + QString(4, u' '));
    lines += Indentation + u']';
    return {setting.key, lines};
}

// The lines of an instance of each kind, where the first of a key says what it is.
QStringList withHelp(const QStringList &lines, const std::vector<Setting> &settings)
{
    QStringList result;
    QSet<QString> explained;
    for (const QString &line : lines) {
        const QString key = keyIn(line);
        const auto setting = std::find_if(
            settings.begin(), settings.end(), [&](const Setting &each) { return each.key == key; });
        if (setting == settings.end() || depthOf(line) != 0) {
            result.append(line);
            continue;
        }
        while (!result.isEmpty() && isComment(result.last()))
            result.removeLast();
        const QString json = splitComment(line).first;
        if (explained.contains(key))
            result.append(json);
        else
            result += commented(json, commentOf(*setting, true));
        explained.insert(key);
    }
    return result;
}

std::vector<Entry> entriesIn(const QStringList &lines, const QString &section)
{
    std::vector<Entry> entries;
    QStringList comments;
    for (qsizetype i = 0; i < lines.size(); ++i) {
        if (isComment(lines[i])) {
            comments.append(lines[i]);
            continue;
        }
        Entry entry{keyIn(lines[i]), comments};
        if (entry.key.isEmpty())
            throw Error(section + QLatin1String(": expected a key, found '") + lines[i].trimmed() + u'\'');
        comments.clear();
        int depth = 0;
        do {
            entry.lines.append(lines[i]);
            depth += depthOf(lines[i]);
        } while (depth > 0 && ++i < lines.size());
        entries.push_back(entry);
    }
    if (!comments.isEmpty())
        throw Error(section + QLatin1String(": expected a key after '") + comments.last().trimmed() + u'\'');
    return entries;
}

QStringList sectionOf(const Facility &facility, const QStringList &lines)
{
    std::vector<Entry> entries;
    for (const Setting &setting : facility.settings)
        entries.push_back(entryOf(setting));
    for (Entry entry : entriesIn(lines, facility.name)) {
        const bool isSetting = std::any_of(facility.settings.begin(), facility.settings.end(),
            [&](const Setting &setting) { return setting.key == entry.key; });
        if (isSetting)
            continue;
        if (entry.key == facility.instances.key)
            entry.lines = withHelp(entry.lines, facility.instances.settings);
        entries.push_back(entry);
    }
    QStringList all;
    for (std::size_t i = 0; i < entries.size(); ++i) {
        QString &last = entries[i].lines.last();
        auto [json, comment] = splitComment(last);
        if (json.endsWith(u','))
            json.chop(1);
        if (i + 1 < entries.size())
            json += u',';
        last = comment.isEmpty() ? json : QString(json + u' ' + CommentMark + comment);
        all += entries[i].lines;
    }
    return all;
}

} // namespace

QString withSettings(const QString &text, const QString &name)
{
    QStringList lines = text.split(u'\n');
    for (const Facility &facility : facilities()) {
        const qsizetype begin =
            lines.indexOf(QString(QLatin1String("    \"") + facility.name + QLatin1String("\": {")));
        if (begin < 0)
            throw Error(name + QLatin1String(": there is no section '") + facility.name + u'\'');
        static const QRegularExpression endLine(QStringLiteral("^    },?$"));
        const qsizetype end = lines.indexOf(endLine, begin);
        if (end < 0)
            throw Error(
                name + QLatin1String(": the section '") + facility.name + QLatin1String("' has no end"));
        lines = lines.first(begin + 1) + sectionOf(facility, lines.sliced(begin + 1, end - begin - 1))
            + lines.sliced(end);
    }
    const QString written = lines.join(u'\n');
    StateStore store;
    // Refuses keys and values that mean nothing.
    const SimulatedPhone phone(JsonNode::parse(written.toUtf8(), name), phoneParts(), store);
    return written;
}

} // namespace oz::pages
