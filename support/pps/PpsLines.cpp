#include "pps/PpsLines.hpp"

namespace oz {

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
    if (filter.empty())
        return message;
    QByteArray out;
    out.reserve(message.size());
    PpsLines lines(message);
    if (!lines.header().isNull())
        appendHeader(&out, lines.header());
    for (PpsLine line; lines.next(&line);) {
        if (line.malformed || filter.contains(line.name))
            appendLine(&out, line.text);
    }
    return out;
}

} // namespace oz
