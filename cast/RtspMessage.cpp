#include "RtspMessage.hpp"

#include <algorithm>

namespace oz::cast {

namespace {

const QByteArray RtspVersion = QByteArrayLiteral("RTSP/1.0");

// The end of the header that \a buffer begins with, past its empty line; -1 if it is not complete.
qsizetype headerEnd(const QByteArray &buffer)
{
    for (qsizetype end = buffer.indexOf('\n'); end >= 0; end = buffer.indexOf('\n', end + 1)) {
        const QByteArrayView rest = QByteArrayView(buffer).sliced(end + 1);
        if (rest.startsWith("\n"))
            return end + 2;
        if (rest.startsWith("\r\n"))
            return end + 3;
    }
    return -1;
}

// A number without sign or spaces, as toInt() would let pass.
std::optional<int> numberOf(const QByteArray &digits)
{
    const bool isNumber = !digits.isEmpty() && digits.size() <= 9
        && std::all_of(digits.begin(), digits.end(), [](char c) { return c >= '0' && c <= '9'; });
    return isNumber ? std::optional(digits.toInt()) : std::nullopt;
}

// A name of a method or a header.
bool isToken(const QByteArray &text)
{
    return !text.isEmpty() && std::all_of(text.begin(), text.end(), [](char c) {
        return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '-'
            || c == '_' || c == '.';
    });
}

bool hasControlCharacters(const QByteArray &text)
{
    return std::any_of(text.begin(), text.end(),
        [](char c) { return quint8(c) == 0x7f || (quint8(c) < 0x20 && c != '\t'); });
}

bool readStartLine(const QByteArray &line, RtspMessage *message)
{
    const qsizetype first = line.indexOf(' ');
    const qsizetype second = line.indexOf(' ', first + 1);
    if (first < 0)
        return false;
    const QByteArray start = line.first(first);
    if (start == RtspVersion) {
        const auto status = numberOf(line.sliced(first + 1, (second < 0 ? line.size() : second) - first - 1));
        if (!status || *status < 100 || *status > 599)
            return false;
        message->status = *status;
        message->reason = second < 0 ? QByteArray() : line.sliced(second + 1);
        return true;
    }
    message->method = start;
    message->target = second < 0 ? QByteArray() : line.sliced(first + 1, second - first - 1);
    return isToken(start) && !message->target.isEmpty() && line.sliced(second + 1) == RtspVersion;
}

} // namespace

QByteArray RtspMessage::header(const char *name) const
{
    for (const Header &header : headers) {
        if (qstricmp(header.name.constData(), name) == 0)
            return header.value;
    }
    return {};
}

int RtspMessage::sequence() const
{
    return numberOf(header("CSeq")).value_or(-1);
}

std::optional<QByteArray> RtspMessage::parameter(const char *name) const
{
    for (const QByteArray &line : body.split('\n')) {
        const qsizetype colon = line.indexOf(':');
        const QByteArray found = (colon < 0 ? line : line.first(colon)).trimmed();
        if (qstricmp(found.constData(), name) == 0)
            return colon < 0 ? QByteArray() : line.sliced(colon + 1).trimmed();
    }
    return std::nullopt;
}

QByteArray RtspMessage::toBytes() const
{
    QByteArray bytes = isRequest()
        ? QByteArray(method + ' ' + target + ' ' + RtspVersion)
        : QByteArray(RtspVersion + ' ' + QByteArray::number(status) + ' ' + reason);
    bytes += "\r\n";
    for (const Header &header : headers) {
        if (qstrnicmp(header.name.constData(), "Content-", 8) != 0)
            bytes += header.name + ": " + header.value + "\r\n";
    }
    if (!body.isEmpty()) {
        bytes +=
            "Content-Type: text/parameters\r\nContent-Length: " + QByteArray::number(body.size()) + "\r\n";
    }
    return bytes + "\r\n" + body;
}

std::optional<RtspMessage> RtspReader::next()
{
    if (!m_problem.isEmpty() || (m_bodySize < 0 && !readHeader()) || m_buffer.size() < m_bodySize)
        return std::nullopt;
    m_message.body = m_buffer.first(m_bodySize);
    m_buffer.remove(0, m_bodySize);
    m_bodySize = -1;
    return std::exchange(m_message, {});
}

// Reads the header of the next message, whose body may not be there yet. False if there is none.
bool RtspReader::readHeader()
{
    // Peers may send empty lines between messages.
    qsizetype blank = 0;
    while (blank < m_buffer.size() && (m_buffer[blank] == '\r' || m_buffer[blank] == '\n'))
        ++blank;
    m_buffer.remove(0, blank);
    const qsizetype end = headerEnd(m_buffer);
    if (end > MaxHeaderSize || (end < 0 && m_buffer.size() > MaxHeaderSize))
        return fail("its header is longer than 16 KiB");
    if (end < 0)
        return false;
    const QByteArray header = m_buffer.first(end);
    m_buffer.remove(0, end);
    return readLines(header);
}

bool RtspReader::readLines(const QByteArray &header)
{
    m_message = {};
    QList<QByteArray> lines = header.split('\n');
    for (QByteArray &line : lines) {
        if (line.endsWith('\r'))
            line.chop(1);
        if (hasControlCharacters(line))
            return fail("it does not speak RTSP");
    }
    if (!readStartLine(lines.takeFirst(), &m_message))
        return fail("it does not speak RTSP");
    for (const QByteArray &line : std::as_const(lines)) {
        if (line.isEmpty())
            continue;
        const qsizetype colon = line.indexOf(':');
        const QByteArray name = line.first(std::max<qsizetype>(colon, 0)).trimmed();
        // A line that goes on in the next one begins that with a space: nobody needs it, and readers
        // disagree.
        if (!isToken(name) || line.front() == ' ' || line.front() == '\t')
            return fail("a header of its message cannot be read");
        m_message.headers.append({name, line.sliced(colon + 1).trimmed()});
    }
    m_bodySize = 0;
    int lengths = 0;
    for (const RtspMessage::Header &one : std::as_const(m_message.headers)) {
        if (qstricmp(one.name.constData(), "Content-Length") != 0)
            continue;
        const auto length = numberOf(one.value);
        if (!length || ++lengths > 1)
            return fail("the length of its message cannot be read");
        if (*length > MaxBodySize)
            return fail("the body of its message is longer than 64 KiB");
        m_bodySize = *length;
    }
    return true;
}

bool RtspReader::fail(const char *problem)
{
    m_problem = QString::fromLatin1(problem);
    m_buffer.clear();
    m_bodySize = -1;
    return false;
}

} // namespace oz::cast
