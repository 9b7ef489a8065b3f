#pragma once

#include "source/Source.hpp"

#include <QSet>
#include <QStringList>

namespace oz::services {

/*! The sessions of clients in a group, which ends with the last of them. */
class WiFiDirectSessions
{
public:
    /*! Begins one, whose key is the outcome's text; refused where the phone \a isConnected not, or where
     * there are too many. */
    [[nodiscard]] Outcome start(bool isConnected);
    /*! Ends one; refused where there is none of this key. */
    [[nodiscard]] Outcome stop(bool isConnected, const QString &key);

    [[nodiscard]] bool isEmpty() const { return m_keys.isEmpty(); }
    void clear() { m_keys.clear(); }
    [[nodiscard]] QStringList keys() const;
    void restore(const QStringList &keys) { m_keys = QSet<QString>(keys.cbegin(), keys.cend()); }

private:
    QSet<QString> m_keys;
};

} // namespace oz::services
