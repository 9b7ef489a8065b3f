#include "pps/PpsLines.hpp"

#include <algorithm>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace oz {

namespace {

std::string_view key(QByteArrayView view)
{
    return {view.data(), std::size_t(view.size())};
}

void appendLine(QByteArray *out, QByteArrayView line)
{
    out->append(line.data(), line.size());
    out->append('\n');
}

void appendHeader(QByteArray *out, QByteArrayView name)
{
    out->append('@');
    appendLine(out, name);
}

// The lines of a message, those of attributes by name; the last of a name counts. A malformed line has no
// name.
class LineIndex
{
public:
    explicit LineIndex(QByteArrayView message)
    {
        PpsLines lines(message);
        for (PpsLine line; lines.next(&line);) {
            const auto place = line.malformed ? m_places.end() : m_places.find(key(line.name));
            if (place != m_places.end()) {
                m_lines[place->second] = line;
                continue;
            }
            if (!line.malformed)
                m_places.emplace(key(line.name), m_lines.size());
            m_lines.push_back(line);
        }
    }
    [[nodiscard]] const std::vector<PpsLine> &lines() const { return m_lines; }
    [[nodiscard]] const PpsLine *find(QByteArrayView name) const
    {
        const auto place = m_places.find(key(name));
        return place == m_places.end() ? nullptr : &m_lines[place->second];
    }

private:
    std::vector<PpsLine> m_lines;
    std::unordered_map<std::string_view, std::size_t> m_places;
};

} // namespace

PpsLines::PpsLines(QByteArrayView message) : m_rest(message)
{
    if (m_rest.startsWith('@')) {
        m_header = takeLine().sliced(1);
        m_lineNumber = 1;
    }
}

QByteArrayView PpsLines::takeLine()
{
    const qsizetype end = m_rest.indexOf('\n');
    const QByteArrayView line = end < 0 ? m_rest : m_rest.first(end);
    m_rest = end < 0 ? QByteArrayView() : m_rest.sliced(end + 1);
    return line;
}

bool PpsLines::next(PpsLine *line)
{
    if (m_rest.isEmpty())
        return false;
    ++m_lineNumber;
    *line = {};
    line->text = takeLine();
    if (line->text.startsWith('-')) {
        line->removal = true;
        line->name = line->text.sliced(1);
        line->malformed = line->name.isEmpty() || line->name.contains(':') || line->name.startsWith('@')
            || line->name.startsWith('-');
        if (line->malformed)
            line->name = line->text;
        return true;
    }
    const qsizetype first = line->text.indexOf(':');
    const qsizetype second = first < 0 ? -1 : line->text.indexOf(':', first + 1);
    line->malformed = first <= 0 || second < 0 || line->text.startsWith('@');
    if (line->malformed) {
        line->name = line->text;
        return true;
    }
    line->name = line->text.first(first);
    line->qualifier = line->text.sliced(first + 1, second - first - 1);
    line->value = line->text.sliced(second + 1);
    return true;
}

QByteArray selectLines(const QByteArray &content, QByteArrayView name, const PpsNames &filter)
{
    const bool hasHeader = content.startsWith('@');
    if (hasHeader && content.endsWith('\n'))
        return filterLines(content, filter);
    QByteArray complete;
    complete.reserve(content.size() + name.size() + 3);
    if (!hasHeader)
        appendHeader(&complete, name);
    complete.append(content);
    if (!complete.endsWith('\n'))
        complete.append('\n');
    return filterLines(complete, filter);
}

QByteArray filterLines(const QByteArray &message, const PpsNames &filter)
{
    if (filter.isEmpty())
        return message;
    QByteArray out;
    out.reserve(message.size());
    PpsLines lines(message);
    if (!lines.header().isNull())
        appendHeader(&out, lines.header());
    for (PpsLine line; lines.next(&line);) {
        if (line.malformed || filter.contains(QByteArray::fromRawData(line.name.data(), line.name.size())))
            appendLine(&out, line.text);
    }
    return out;
}

QByteArray deltaLines(const QByteArray &before, const QByteArray &after)
{
    const LineIndex old(before);
    const LineIndex current(after);
    QByteArray out;
    if (const QByteArrayView name = PpsLines(after).header(); !name.isNull())
        appendHeader(&out, name);
    for (const PpsLine &line : current.lines()) {
        const PpsLine *was = line.malformed ? nullptr : old.find(line.name);
        if (!was || was->text != line.text)
            appendLine(&out, line.text);
    }
    for (const PpsLine &line : old.lines()) {
        if (line.malformed || line.removal || current.find(line.name))
            continue;
        out.append('-');
        appendLine(&out, line.name);
    }
    return out;
}

QByteArray mergeLines(
    const QByteArray &content, const QByteArray &update, QByteArrayView name, PpsMerge merge)
{
    const LineIndex changes(update);
    QByteArray out;
    out.reserve(content.size() + update.size() + name.size() + 2);
    appendHeader(&out, name);
    const LineIndex old(merge == PpsMerge::Keep ? QByteArrayView(content) : QByteArrayView());
    for (const PpsLine &line : old.lines()) {
        if (line.malformed || line.removal)
            continue;
        const PpsLine *change = changes.find(line.name);
        if (!change)
            appendLine(&out, line.text);
        else if (!change->removal)
            appendLine(&out, change->text);
    }
    for (const PpsLine &line : changes.lines()) {
        if (line.removal || line.malformed)
            continue;
        if (const PpsLine *was = old.find(line.name); !was || was->removal)
            appendLine(&out, line.text);
    }
    return out;
}

} // namespace oz
