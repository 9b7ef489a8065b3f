#pragma once

#include <QMutex>
#include <QString>
#include <QStringList>
#include <QVariantMap>

#include <chrono>
#include <optional>

namespace oz::testing {

/*!
 * The way from a test to its phone's services. Each exchange has a connection of its own, so that one can
 * happen while another waits. Any thread may use it.
 */
class PhoneLink
{
public:
    /*! What an exchange came to: the data of the answer, or an errno and its text. */
    struct Outcome
    {
        QVariant data;
        int error = 0;
        QString errorText;
    };

    /*! How long the answer may take; the event loop of a thread that has one runs meanwhile. */
    struct Wait
    {
        std::chrono::milliseconds limit{0};
        bool endsHere = false; //!< with ETIMEDOUT, not by an answer of the services
    };

    explicit PhoneLink(const QString &root) : m_root(root) { }

    /*! Asks the services; throws PhoneError, beginning with \a what, where no answer comes. */
    [[nodiscard]] Outcome ask(const QString &what, const QString &message, const QVariant &data,
        const std::optional<Wait> &wait = std::nullopt) const;
    /*! As ask(), without a wait; throws for an error too. */
    QVariantMap request(const QString &what, const QString &message, const QVariant &data = {}) const;

    /*! Tells the phone what `ozdevice sim` would. */
    void tell(const QStringList &words);
    /*! What it was told, in its order. */
    [[nodiscard]] QStringList orders() const;
    /*! What is called \a name; invalid where it is not known. */
    [[nodiscard]] QVariant value(const QString &name) const;

    [[nodiscard]] const QString &root() const { return m_root; }
    [[noreturn]] void fail(const QString &what, const QString &why) const;

private:
    QString m_root;
    mutable QMutex m_mutex;
    QStringList m_orders;
};

} // namespace oz::testing
