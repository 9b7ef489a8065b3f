#include <oz/PrintableText.hpp>

#include <QChar>

namespace oz {

namespace {

bool isShown(char32_t character)
{
    // These two join and part the letters of some languages, and the parts of pictures.
    if (character == U'\u200c' || character == U'\u200d')
        return true;
    switch (QChar::category(character)) {
    case QChar::Other_Control:
    case QChar::Other_Format:
    case QChar::Other_Surrogate:
    case QChar::Separator_Line:
    case QChar::Separator_Paragraph:
        return false;
    default:
        return true;
    }
}

} // namespace

QString printableText(const QString &text)
{
    QString shown;
    shown.reserve(text.size());
    for (qsizetype i = 0; i < text.size(); ++i) {
        const bool isPair = i + 1 < text.size() && text[i].isHighSurrogate() && text[i + 1].isLowSurrogate();
        const qsizetype size = isPair ? 2 : 1;
        if (isShown(isPair ? QChar::surrogateToUcs4(text[i], text[i + 1]) : text[i].unicode())) {
            shown += QStringView(text).sliced(i, size);
        } else {
            for (qsizetype unit = i; unit < i + size; ++unit)
                shown +=
                    QLatin1String("\\u") + QString::number(text[unit].unicode(), 16).rightJustified(4, u'0');
        }
        i += size - 1;
    }
    return shown;
}

} // namespace oz
