#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QSet>

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

using PpsNames = QSet<QByteArray>;

/*! \a content headed by "@name" (kept where it has a header of its own), filtered. */
[[nodiscard]] QByteArray selectLines(const QByteArray &content, QByteArrayView name, const PpsNames &filter);

/*!
 * Of the attributes of \a message those in \a filter, where that is not empty. Malformed lines stay, so that
 * whoever decodes the text learns of them.
 */
[[nodiscard]] QByteArray filterLines(const QByteArray &message, const PpsNames &filter);

/*! The header of \a after and the lines of it that \a before does not hold, with "-name" for what is gone. */
[[nodiscard]] QByteArray deltaLines(const QByteArray &before, const QByteArray &after);

/*! What a publish does with the attributes that it does not name. */
enum class PpsMerge { Keep, Drop };

/*!
 * The object \a name after \a update is published onto \a content: its attributes keep their order, new ones
 * come last, "-name" in \a update takes one away. Malformed lines of \a content, which no name can reach, are
 * dropped.
 */
[[nodiscard]] QByteArray mergeLines(
    const QByteArray &content, const QByteArray &update, QByteArrayView name, PpsMerge merge);

} // namespace oz
