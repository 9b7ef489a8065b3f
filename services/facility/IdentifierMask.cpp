#include "facility/IdentifierMask.hpp"

#include <QRegularExpression>
#include <QSysInfo>

#include <algorithm>
#include <arpa/inet.h>
#include <functional>

namespace oz::services {

namespace {

// Of the addresses that masked ones have.
const QString DocumentationRange = QStringLiteral("02:00:5e:00:");

bool isIpv6(const QString &text)
{
    in6_addr address{};
    return text.size() > 2 && ::inet_pton(AF_INET6, text.toLatin1().constData(), &address) == 1;
}

QString replaced(const QString &line, const QRegularExpression &form,
    const std::function<QString(const QRegularExpressionMatch &match)> &replacement)
{
    QString text;
    qsizetype end = 0;
    for (const QRegularExpressionMatch &match : form.globalMatch(line)) {
        text += line.sliced(end, match.capturedStart() - end) + replacement(match);
        end = match.capturedEnd();
    }
    return text + line.sliced(end);
}

} // namespace

qsizetype IdentifierMask::indexOf(QStringList &known, const QString &text)
{
    m_hasMasked = true;
    if (!known.contains(text))
        known.append(text);
    return known.indexOf(text);
}

QString IdentifierMask::text(const QString &kind, const QString &text)
{
    if (m_keepsIdentifiers || text.isEmpty())
        return text;
    return kind + u'-' + QString::number(indexOf(m_texts[kind], text) + 1);
}

QString IdentifierMask::address(const QString &address)
{
    if (m_keepsIdentifiers || address.isEmpty())
        return address;
    const auto number = indexOf(m_addresses, address.toLower()) + 1;
    return DocumentationRange
        + QStringLiteral("%1:%2")
              .arg(number / 256, 2, 16, QLatin1Char('0'))
              .arg(number % 256, 2, 16, QLatin1Char('0'));
}

int IdentifierMask::number(const QString &kind, int number)
{
    return m_keepsIdentifiers ? number : int(indexOf(m_numbers[kind], QString::number(number))) + 1;
}

QString IdentifierMask::digits(const QString &digits, qsizetype kept)
{
    if (m_keepsIdentifiers)
        return digits;
    m_hasMasked = true;
    return digits.left(kept).leftJustified(digits.size() - 1, u'0') + u'1';
}

QString IdentifierMask::lineWithoutTexts(const QString &line) const
{
    QHash<QString, QString> masks;
    QStringList texts;
    for (auto kind = m_texts.cbegin(); kind != m_texts.cend(); ++kind) {
        for (qsizetype i = 0; i < kind->size(); ++i) {
            masks.insert(kind->at(i), kind.key() + u'-' + QString::number(i + 1));
            texts.append(kind->at(i));
        }
    }
    if (texts.isEmpty())
        return line;
    // A name may be part of another one.
    std::sort(texts.begin(), texts.end(),
        [](const QString &one, const QString &other) { return one.size() > other.size(); });
    for (QString &text : texts)
        text = QRegularExpression::escape(text);
    const QRegularExpression any(QLatin1String("(?<!\\w)(?:") + texts.join(u'|') + QLatin1String(")(?!\\w)"),
        QRegularExpression::UseUnicodePropertiesOption);
    return replaced(line, any, [&masks](const auto &match) { return masks.value(match.captured()); });
}

QString IdentifierMask::line(const QString &line)
{
    if (m_keepsIdentifiers)
        return line;
    static const QRegularExpression hardware(
        QStringLiteral("\\b[0-9a-f]{2}(?:[:-][0-9a-f]{2}){5}\\b"), QRegularExpression::CaseInsensitiveOption);
    // The names of interfaces that are made of their addresses.
    static const QRegularExpression interface(QStringLiteral("\\b(en|wl|ww)x([0-9a-f]{12})\\b"));
    static const QRegularExpression ipv4(QStringLiteral("\\b\\d{1,3}(?:\\.\\d{1,3}){3}\\b"));
    static const QRegularExpression ipv6(
        QStringLiteral("(?<![\\w:])[0-9a-f:.]*:[0-9a-f:.]*:[0-9a-f:]*(?!\\w)"),
        QRegularExpression::CaseInsensitiveOption);
    // Serial numbers, identities in networks, UUIDs.
    static const QRegularExpression id(
        QStringLiteral(
            "\\b(?:[0-9a-f]{8}(?:-[0-9a-f]{4}){3}-[0-9a-f]{12}|(?=[a-f]*\\d)[0-9a-f]{12,}|\\d{8,})\\b"),
        QRegularExpression::CaseInsensitiveOption);
    static const QRegularExpression user(
        QStringLiteral("(?<=/home/|the user |the group )(?!(?:root|ozdevice)\\b)[^/\\s'\")]+"));
    static const QRegularExpression media(QStringLiteral("(?<=/media/)[^\\s'\":,;]+"));
    static const QRegularExpression machine(QLatin1String("(?<![\\w-])")
        + QRegularExpression::escape(QSysInfo::machineHostName()) + QLatin1String("(?![\\w-])"));

    const auto as = [this](const char *kind) {
        return [this, kind = QString::fromLatin1(kind)](const QRegularExpressionMatch &match) {
            const QString found = match.captured();
            const int number = found.startsWith(kind + u'-') ? found.sliced(kind.size() + 1).toInt() : 0;
            const bool isMasked = number > 0 && number <= m_texts.value(kind).size();
            return isMasked ? found : text(kind, found);
        };
    };
    QString masked = lineWithoutTexts(line);
    masked = replaced(masked, hardware, [this](const QRegularExpressionMatch &match) {
        const QString found = match.captured().replace(u'-', u':');
        return found.startsWith(DocumentationRange) ? found : address(found);
    });
    masked = replaced(masked, interface, [this](const QRegularExpressionMatch &match) -> QString {
        QString found = match.captured(2);
        for (qsizetype i = 10; i > 0; i -= 2)
            found.insert(i, u':');
        return match.captured(1) + u'x'
            + (found.startsWith(DocumentationRange) ? found : address(found)).remove(u':');
    });
    masked = replaced(masked, ipv4, as("ip-address"));
    masked = replaced(masked, ipv6, [this](const QRegularExpressionMatch &match) {
        const QString found = match.captured();
        return isIpv6(found) ? text(QStringLiteral("ip-address"), found) : found;
    });
    masked = replaced(masked, id, as("id"));
    masked = replaced(masked, user, as("user"));
    masked = replaced(masked, media, as("volume"));
    if (!QSysInfo::machineHostName().isEmpty() && QSysInfo::machineHostName() != u"localhost")
        masked = replaced(masked, machine, as("host"));
    return masked;
}

} // namespace oz::services
