#include "facility/IdentifierMask.hpp"

#include <QRegularExpression>
#include <QSysInfo>

#include <algorithm>
#include <arpa/inet.h>
#include <functional>
#include <utility>

namespace oz::services {

namespace {

// Of the addresses that masked ones have.
const QString DocumentationRange = QStringLiteral("02:00:5e:00:");
const QString IpAddress = QStringLiteral("ip-address");

bool isIpv6(const QString &text)
{
    in6_addr address{};
    return text.size() > 2 && ::inet_pton(AF_INET6, text.toLatin1().constData(), &address) == 1;
}

// Where an IPv6 address is in a run of letters, digits, dots and colons, as in "host:fe80::1:".
std::pair<qsizetype, qsizetype> ipv6In(const QString &run)
{
    // A longer part of a run holds no address.
    for (qsizetype begin = std::max<qsizetype>(0, run.size() - INET6_ADDRSTRLEN); begin < run.size();) {
        for (const qsizetype size : {run.size() - begin, run.size() - begin - 1}) {
            if (isIpv6(run.sliced(begin, size)))
                return {begin, size};
        }
        const qsizetype colon = run.indexOf(u':', begin);
        begin = colon < 0 ? run.size() : colon + 1;
    }
    return {};
}

// The digits of a hardware address as pairs.
QString withColons(QString digits)
{
    for (qsizetype i = digits.size() == 12 ? 10 : 0; i > 0; i -= 2)
        digits.insert(i, u':');
    return digits;
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

// An address without separators, as in the names of interfaces.
QString IdentifierMask::bareAddress(const QString &digits)
{
    QString found = withColons(digits);
    if (!found.startsWith(DocumentationRange))
        found = address(found);
    return found.remove(u':');
}

QString IdentifierMask::interfaces(const QString &line)
{
    if (m_keepsIdentifiers)
        return line;
    static const QRegularExpression form(QStringLiteral("\\b(en|wl|ww)x([0-9a-f]{12})\\b"));
    return replaced(line, form, [this](const auto &match) -> QString {
        return match.captured(1) + u'x' + bareAddress(match.captured(2));
    });
}

// A mask of this kind stays as it is.
QString IdentifierMask::found(const QString &kind, const QString &found)
{
    const int number = found.startsWith(kind + u'-') ? found.sliced(kind.size() + 1).toInt() : 0;
    return number > 0 && number <= m_texts.value(kind).size() ? found : text(kind, found);
}

QString IdentifierMask::lineWithoutTexts(const QString &line) const
{
    QHash<QString, QString> masks;
    QHash<QString, QString> folded; // people write names in other capitals
    QStringList texts;
    for (auto kind = m_texts.cbegin(); kind != m_texts.cend(); ++kind) {
        for (qsizetype i = 0; i < kind->size(); ++i) {
            const QString mask = kind.key() + u'-' + QString::number(i + 1);
            masks.insert(kind->at(i), mask);
            folded.insert(kind->at(i).toCaseFolded(), mask);
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
        QRegularExpression::UseUnicodePropertiesOption | QRegularExpression::CaseInsensitiveOption);
    return replaced(line, any, [&](const auto &match) {
        const QString name = match.captured();
        return masks.value(name, folded.value(name.toCaseFolded()));
    });
}

QString IdentifierMask::lineWithoutAddresses(const QString &line)
{
    static const QRegularExpression hardware(
        QStringLiteral("(?<![0-9a-z])[0-9a-f]{2}([:_-])[0-9a-f]{2}(?:\\1[0-9a-f]{2}){4}(?![0-9a-z])"),
        QRegularExpression::CaseInsensitiveOption);
    static const QRegularExpression ipv4(QStringLiteral("\\b\\d{1,3}(?:\\.\\d{1,3}){3}\\b"));
    static const QRegularExpression withColon(QStringLiteral("(?<![\\w.:])[\\w.]*+:[\\w.:]*"));
    QString masked = replaced(line, hardware, [this](const auto &match) {
        const QString found = match.captured().replace(match.captured(1), QLatin1String(":"));
        return found.startsWith(DocumentationRange) ? found : address(found);
    });
    masked = interfaces(masked);
    masked = replaced(masked, ipv4, [this](const auto &match) { return found(IpAddress, match.captured()); });
    return replaced(masked, withColon, [this](const auto &match) {
        const QString found = match.captured();
        const auto [begin, size] = ipv6In(found);
        if (size == 0)
            return found;
        return QString(
            found.left(begin) + text(IpAddress, found.sliced(begin, size)) + found.sliced(begin + size));
    });
}

QString IdentifierMask::line(const QString &line)
{
    if (m_keepsIdentifiers)
        return line;
    // The names of systemd's units are not meant.
    static const QRegularExpression email(
        QStringLiteral("(?<![\\w.+-])[\\w.+-]++@[\\w-]+(?:\\.[\\w-]+)*\\."
                       "(?!(?:service|socket|slice|scope|mount|target|timer|device)\\b)[a-z]{2,}"),
        QRegularExpression::CaseInsensitiveOption | QRegularExpression::UseUnicodePropertiesOption);
    static const QRegularExpression telephone(QStringLiteral("(?<![\\w+])\\+\\d[\\d ()./-]{5,}\\d(?!\\w)"));
    // Serial numbers, identities in networks, UUIDs, and addresses without separators.
    static const QRegularExpression id(
        QStringLiteral("(?<![0-9a-z])(?:[0-9a-f]{8}(?:-[0-9a-f]{4}){3}-[0-9a-f]{12}|[0-9a-f]{12,}|\\d{8,})"
                       "(?![0-9a-z])"),
        QRegularExpression::CaseInsensitiveOption);
    static const QRegularExpression user(QStringLiteral(
        "(?<=/home/|the user |the group )(?!(?:root|ozdevice)\\b)[^/\\s'\"),;:]*[^/\\s'\"),;:.]"));
    static const QRegularExpression media(QStringLiteral("(?<=/media/)[^\\s'\":,;]+"));
    static const QRegularExpression machine(QLatin1String("(?<![\\w-])")
        + QRegularExpression::escape(QSysInfo::machineHostName()) + QLatin1String("(?![\\w-])"));

    const auto as = [this](const char *kind) {
        return [this, kind = QString::fromLatin1(kind)](
                   const QRegularExpressionMatch &match) { return found(kind, match.captured()); };
    };
    QString masked = lineWithoutTexts(replaced(line, email, as("email")));
    masked = replaced(masked, telephone, as("id"));
    masked = lineWithoutAddresses(masked);
    masked = replaced(masked, id, [this](const QRegularExpressionMatch &match) {
        const QString digits = match.captured();
        const QString address = withColons(digits).toLower();
        const bool isAddress = m_addresses.contains(address) || address.startsWith(DocumentationRange);
        return isAddress ? bareAddress(digits) : found(QStringLiteral("id"), digits);
    });
    masked = replaced(masked, user, as("user"));
    masked = replaced(masked, media, as("volume"));
    if (!QSysInfo::machineHostName().isEmpty() && QSysInfo::machineHostName() != u"localhost")
        masked = replaced(masked, machine, as("host"));
    return masked;
}

} // namespace oz::services
