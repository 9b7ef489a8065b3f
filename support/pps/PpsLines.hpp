#pragma once

#include <QByteArray>
#include <QByteArrayView>

#include <set>

namespace oz {

/*! One line of a message, as views into it. */
struct PpsLine
{
    QByteArrayView text; //!< the whole line without its LF
    QByteArrayView name; //!< the attribute's name; for a malformed line, the whole line
    QByteArrayView qualifier;
    QByteArrayView value;
    bool removal = false; //!< "-name"
    bool malformed = false; //!< neither "-name" nor two colons
};

/*!
 * Walks over the lines of a message. This is the only place that knows how a message falls into lines, and
 * lines into parts; it does not look at values.
 */
class PpsLines
{
public:
    explicit PpsLines(QByteArrayView message);

    /*! The name in the header line, null where the message has none. */
    [[nodiscard]] QByteArrayView header() const { return m_header; }
    /*! The next attribute line; false at the end. */
    bool next(PpsLine *line);
    /*! The number of the line that next() gave last, from 1. */
    [[nodiscard]] int lineNumber() const { return m_lineNumber; }

private:
    QByteArrayView takeLine();

    QByteArrayView m_rest;
    QByteArrayView m_header;
    int m_lineNumber = 0;
};

using PpsNames = std::set<QByteArray, std::less<>>;

/*! \a content headed by "@name" (kept where it has a header of its own), filtered. */
[[nodiscard]] QByteArray selectLines(const QByteArray &content, QByteArrayView name, const PpsNames &filter);

/*!
 * \a message without the attributes that are not in \a filter; an empty filter keeps all. Malformed lines
 * stay, so that decoding the text reports them.
 */
[[nodiscard]] QByteArray filterLines(const QByteArray &message, const PpsNames &filter);

/*! Appends \a line and a line feed. */
void appendLine(QByteArray *out, QByteArrayView line);
/*! Appends the header line of the object \a name. */
void appendHeader(QByteArray *out, QByteArrayView name);

} // namespace oz
