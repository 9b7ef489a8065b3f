#include "pps/PpsChanges.hpp"

#include "pps/PpsTextParts.hpp"

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

// The lines of a message, those of attributes by name; the last of a name counts. A malformed line has no
// name.
class LineIndex
{
public:
    explicit LineIndex(QByteArrayView message)
    {
        m_lines.reserve(Few);
        PpsLines lines(message);
        for (PpsLine line; lines.next(&line);) {
            const std::size_t place = line.malformed ? m_lines.size() : placeOf(line.name);
            if (place < m_lines.size()) {
                m_lines[place] = line;
                continue;
            }
            m_lines.push_back(line);
            if (m_lines.size() == Few + 1) {
                for (std::size_t i = 0; i < Few; ++i)
                    note(i);
            }
            if (m_lines.size() > Few)
                note(place);
        }
    }
    [[nodiscard]] const std::vector<PpsLine> &lines() const { return m_lines; }
    [[nodiscard]] const PpsLine *find(QByteArrayView name) const
    {
        const std::size_t place = placeOf(name);
        return place == m_lines.size() ? nullptr : &m_lines[place];
    }

private:
    // Up to which looking at each is the quickest way to find one.
    static constexpr std::size_t Few = 16;

    void note(std::size_t place)
    {
        if (!m_lines[place].malformed)
            m_places.emplace(key(m_lines[place].name), place);
    }
    [[nodiscard]] std::size_t placeOf(QByteArrayView name) const
    {
        if (m_lines.size() > Few) {
            const auto place = m_places.find(key(name));
            return place == m_places.end() ? m_lines.size() : place->second;
        }
        const auto found = std::find_if(m_lines.begin(), m_lines.end(),
            [&](const PpsLine &line) { return !line.malformed && line.name == name; });
        return std::size_t(found - m_lines.begin());
    }

    std::vector<PpsLine> m_lines;
    std::unordered_map<std::string_view, std::size_t> m_places;
};

bool isPartOfScalar(char c)
{
    return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || c == 'E' || c == '.' || c == '+' || c == '-';
}

// The string, number or word that begins at \a place of a JSON text without escapes; empty if there is none.
QByteArrayView tokenAt(QByteArrayView json, qsizetype place)
{
    const QByteArrayView rest = json.sliced(place);
    if (rest.startsWith('"'))
        return rest.first(rest.indexOf('"', 1) + 1);
    return rest.first(std::find_if_not(rest.begin(), rest.end(), isPartOfScalar) - rest.begin());
}

// False for a number that can be written in another way, or is so long that it may be rounded.
bool hasOneSpelling(QByteArrayView token)
{
    constexpr qsizetype MostDigits = 18;
    const QByteArrayView digits = token.startsWith('-') ? token.sliced(1) : token;
    const auto isDigit = [](char c) { return c >= '0' && c <= '9'; };
    if (digits.isEmpty() || !isDigit(digits.front()))
        return true;
    return digits.size() <= MostDigits && token != "-0" && std::all_of(digits.begin(), digits.end(), isDigit);
}

// True if two JSON texts are certainly different values; false if they have to be parsed to know. What
// precedes their first difference is the same, so the tokens there stand at the same place in both values,
// and nearly every change between two publishes shows in them.
bool surelyDifferAsJson(QByteArrayView one, QByteArrayView other)
{
    if (one.contains('\\') || other.contains('\\'))
        return false; // an escape may spell a character of the other text
    const qsizetype shorter = std::min(one.size(), other.size());
    const qsizetype place =
        std::mismatch(one.begin(), one.begin() + shorter, other.begin()).first - one.begin();
    const QByteArrayView same = one.first(place);
    if (same.count('"') % 2 != 0) {
        const qsizetype begin = same.lastIndexOf('"');
        const QByteArrayView token = tokenAt(one, begin);
        const QByteArrayView otherToken = tokenAt(other, begin);
        if (!one.sliced(begin + token.size()).trimmed().startsWith(':'))
            return true;
        // Names of members, which may stand in another order.
        return !other.sliced(begin).contains(token) || !one.sliced(begin).contains(otherToken);
    }
    const auto isSpace = [](char c) { return c == ' ' || c == '\t' || c == '\r'; };
    if (place == shorter || isSpace(one[place]) || isSpace(other[place]))
        return false;
    const auto isOutside = [](char c) { return !isPartOfScalar(c); };
    const qsizetype begin = same.rend() - std::find_if(same.rbegin(), same.rend(), isOutside);
    return hasOneSpelling(tokenAt(one, begin)) && hasOneSpelling(tokenAt(other, begin));
}

// As above, for two different texts with the same qualifier.
bool surelyDiffer(QByteArrayView qualifier, QByteArrayView one, QByteArrayView other)
{
    if (qualifier == "json")
        return surelyDifferAsJson(one, other);
    if (qualifier == "n")
        return hasOneSpelling(one) && hasOneSpelling(other);
    return qualifier.isEmpty() || qualifier == "b"; // which have one spelling
}

// Values are one where their shortest text is.
bool sameValue(const PpsLine &one, const PpsLine &other)
{
    if (one.text == other.text)
        return true;
    if (one.malformed || other.malformed || one.removal || other.removal)
        return false;
    if (one.qualifier == other.qualifier && surelyDiffer(one.qualifier, one.value, other.value))
        return false;
    const auto shortest = [](const PpsLine &line) {
        if (!line.text.isValidUtf8())
            return QByteArray();
        QString problem;
        QByteArray text;
        const QVariant value = PpsText::decodeValue(line, &problem);
        return value.isValid() && PpsText::appendValue(&text, value, &problem) ? text : QByteArray();
    };
    const QByteArray text = shortest(one);
    return !text.isEmpty() && text == shortest(other);
}

} // namespace

bool sameAttributes(const QByteArray &one, const QByteArray &other)
{
    if (one == other)
        return true;
    PpsLines lines(one);
    PpsLines others(other);
    if (lines.header() != others.header())
        return false;
    for (;;) {
        PpsLine line;
        PpsLine otherLine;
        const bool more = lines.next(&line);
        if (others.next(&otherLine) != more || (more && line.name != otherLine.name))
            break;
        if (!more)
            return true;
        if (!sameValue(line, otherLine))
            return false;
    }
    // Another order, or more or fewer lines.
    const LineIndex all(one);
    const LineIndex allOthers(other);
    return all.lines().size() == allOthers.lines().size()
        && std::all_of(all.lines().begin(), all.lines().end(), [&](const PpsLine &line) {
               const PpsLine *otherLine = line.malformed ? nullptr : allOthers.find(line.name);
               return otherLine && sameValue(line, *otherLine);
           });
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
        if (!was || !sameValue(*was, line))
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
            appendLine(&out, sameValue(line, *change) ? line.text : change->text);
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
