#pragma once

#include <oz/client/DaemonClient.hpp>

#include <QMutex>
#include <QString>
#include <QStringList>
#include <QVariantMap>

namespace oz::testing {

/*! The connection of a test to its phone's services. Any thread may use it. */
class PhoneLink
{
public:
    explicit PhoneLink(const QString &root) : m_root(root), m_client(root) { }

    /*! Calls \a ask and turns the DaemonError that it throws into a PhoneError that begins with \a what. */
    template <typename Ask>
    auto guarded(const QString &what, const Ask &ask) const
    {
        try {
            return ask(m_client);
        } catch (const client::DaemonError &error) {
            fail(what, error);
        }
    }
    /*! The data of the answer to a request. */
    QVariantMap request(const QString &what, const QString &message, const QVariant &data = {}) const;

    /*! Tells the phone what `ozdevice sim` would. */
    void tell(const QStringList &words);
    /*! The orders so far, oldest first. */
    [[nodiscard]] QStringList orders() const;
    /*! The value called \a name; invalid if it is unknown. */
    [[nodiscard]] QVariant value(const QString &name) const;

    [[noreturn]] void fail(const QString &what, const QString &why) const;

private:
    [[noreturn]] void fail(const QString &what, const client::DaemonError &error) const;

    QString m_root;
    client::DaemonClient m_client;
    mutable QMutex m_mutex;
    QStringList m_orders;
};

} // namespace oz::testing
