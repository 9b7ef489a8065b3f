#pragma once

#include "pps/PpsLines.hpp"

#include <QString>
#include <QVariant>

/*! Parts that decoding and encoding share, and operations on single values. */
namespace oz::PpsText {

inline constexpr char HexDigits[] = "0123456789ABCDEF";

/*! The error text for a message of \a size bytes, which is too long. */
[[nodiscard]] QString sizeError(qsizetype size);

/*! True if \a message decodes. */
[[nodiscard]] bool isValid(const QByteArray &message);

/*! The value of one line; an invalid QVariant, with the error text, where it does not fit the qualifier. */
[[nodiscard]] QVariant decodeValue(const PpsLine &line, QString *error);

/*! Appends "qualifier:value"; false, with the error set, where the value has no form. */
[[nodiscard]] bool appendValue(QByteArray *out, const QVariant &value, QString *error);

/*! Gives the callers that want no error text a place to put it, and clears it for the others. */
class ErrorText
{
public:
    explicit ErrorText(QString *wanted) : m_text(wanted ? wanted : &m_unwanted) { m_text->clear(); }
    QString *operator&() { return m_text; }
    QString &operator*() { return *m_text; }

private:
    QString m_unwanted;
    QString *m_text;
};

} // namespace oz::PpsText
