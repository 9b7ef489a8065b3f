#pragma once

#include <QHash>
#include <QString>
#include <QStringList>

namespace oz::services {

/*!
 * Replaces what identifies people and devices in a recording, the same one always by the same text, unless it
 * is to be kept.
 */
class IdentifierMask
{
public:
    explicit IdentifierMask(bool keepsIdentifiers) : m_keepsIdentifiers(keepsIdentifiers) { }

    [[nodiscard]] bool keepsIdentifiers() const { return m_keepsIdentifiers; }
    /*! True if something has been replaced. */
    [[nodiscard]] bool hasMasked() const { return m_hasMasked; }

    /*! \a text, or what stands for it everywhere in this recording: "KIND-1". */
    [[nodiscard]] QString text(const QString &kind, const QString &text);
    /*! \a address, or one of the range that is free for documentation; one device has one in all facilities.
     */
    [[nodiscard]] QString address(const QString &address);
    /*! \a line, in which the addresses in names of network interfaces are replaced, as in "wlx02005e000001".
     */
    [[nodiscard]] QString interfaces(const QString &line);
    [[nodiscard]] int number(const QString &kind, int number);
    /*! \a digits, or as many zeros behind the first \a kept ones, and a one. */
    [[nodiscard]] QString digits(const QString &digits, qsizetype kept);
    /*! A line for people, without the texts that this has replaced before, whatever their capitals, without
     * addresses of hardware, networks and e-mail, long numbers, and the names of users and of this machine.
     */
    [[nodiscard]] QString line(const QString &line);

private:
    [[nodiscard]] QString lineWithoutTexts(const QString &line) const;
    [[nodiscard]] QString lineWithoutAddresses(const QString &line);
    [[nodiscard]] QString bareAddress(const QString &digits);
    [[nodiscard]] QString found(const QString &kind, const QString &found);
    [[nodiscard]] qsizetype indexOf(QStringList &known, const QString &text);

    bool m_keepsIdentifiers;
    bool m_hasMasked = false;
    // By kind; their places are their numbers.
    QHash<QString, QStringList> m_texts;
    QHash<QString, QStringList> m_numbers;
    QStringList m_addresses;
};

} // namespace oz::services
