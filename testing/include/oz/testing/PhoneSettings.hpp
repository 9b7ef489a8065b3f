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
 * What a test's phone is like when it starts, by the keys of the phone's file (docs/phone.md):
 *
 *     Phone phone(PhoneSettings().set("battery.level", 50).set("led.on-seconds", 60));
 *
 * What is not set is as in the phone that is installed (share/ozdevice/phone.json), except that networks,
 * profiles, peers, sinks, displays and processors that are named here take the place of all that are named
 * there. Keys and values are checked when the phone starts: Phone throws an error that names them.
 */
class OZ_TESTING_EXPORT PhoneSettings
{
public:
    /*! The installed phone. */
    PhoneSettings() = default;
    /*! The phone that the text of a phone's file, or of a scenario, describes; nothing else can be set then.
     */
    [[nodiscard]] static PhoneSettings fromText(const QByteArray &text);
    /*! As fromText(), of a file; throws PhoneError where it cannot be read. */
    [[nodiscard]] static PhoneSettings fromFile(const QString &file);

    /*!
     * Sets the \a value of a key, after those of the maps in which it stands, with dots between them:
     * "wifi-direct.peers.tv.pin". A value is text, a number, true or false, a list or a map; an invalid one
     * is null, which says that something is not known. Throws PhoneError after fromText() and fromFile().
     */
    PhoneSettings &set(const QString &path, const QVariant &value);

    /*! The text of the phone's file; empty for the installed phone. */
    [[nodiscard]] QByteArray text() const;

private:
    // In the order in which they were set first, as peers and sinks have an order.
    QList<std::pair<QStringList, QVariant>> m_content;
    QByteArray m_text;
};

} // namespace oz::testing
