#pragma once

#include <oz/testing/OzTestingGlobal.hpp>

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>
#include <QVariant>

#include <utility>

namespace oz::testing {

/*!
 * The initial state of a test's phone, by the keys of the phone's file (docs/phone.md):
 *
 *     Phone phone(PhoneSettings().set("battery.level", 50).set("led.on-seconds", 60));
 *
 * All other keys are as in the installed phone (share/ozdevice/phone.json), except that networks, profiles,
 * peers, sinks, displays and processors that are named here replace all of the installed phone's. Phone
 * checks keys and values when it starts, and throws an error that names a wrong one.
 */
class OZ_TESTING_EXPORT PhoneSettings
{
public:
    /*! The installed phone. */
    PhoneSettings() = default;
    /*! The phone that the text of a phone's file, or of a scenario, describes; set() then fails. */
    [[nodiscard]] static PhoneSettings fromText(const QByteArray &text);
    /*! As fromText(), from a file; throws PhoneError if it cannot be read. */
    [[nodiscard]] static PhoneSettings fromFile(const QString &file);

    /*!
     * Sets the \a value of a key. Its path begins with the keys of the maps around it, separated by dots:
     * "wifi-direct.peers.tv.pin". A value is text, a number, true or false, a list or a map; an invalid one
     * is null, which means unknown. Throws PhoneError after fromText() and fromFile().
     */
    PhoneSettings &set(const QString &path, const QVariant &value);

    /*! The text of the phone's file; empty for the installed phone. */
    [[nodiscard]] QByteArray text() const;

private:
    // In the order of their first set(), because peers and sinks have an order.
    QList<std::pair<QStringList, QVariant>> m_content;
    QByteArray m_text;
};

} // namespace oz::testing
