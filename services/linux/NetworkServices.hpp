#pragma once

#include "linux/BusService.hpp"

#include <QMap>

namespace oz::services {

/*! Services of one type that devices of the network tell of (mDNS), as Avahi finds them. */
class NetworkServices : public QObject
{
    Q_OBJECT

public:
    /*! By the \a type: "_ipp._tcp". */
    NetworkServices(std::shared_ptr<SystemBus> bus, const QString &type);

    struct Service
    {
        QString name; //!< any text, from a stranger
        QString address; //!< "192.168.1.7"
        int port = 0;
        QMap<QString, QString> records; //!< of its TXT record; names are in lower case
    };

    /*! Why nothing is found, in words for a person; empty while Avahi runs. */
    [[nodiscard]] const QString &absence() const { return m_avahi.absence(); }

    using Found = std::function<void(const QList<Service> &services)>;
    /*! Looks for services anew, and calls \a found once; an earlier search that runs is over without a call.
     */
    void search(const Found &found);
    void cancel();

Q_SIGNALS:
    /*! absence() is another. */
    void presenceChanged();

private:
    struct Item
    {
        int interface = 0;
        int protocol = 0;
        QString name;
        QString type;
        QString domain;
    };

    void free(const QString &browser);
    void onItem(const QDBusMessage &message);
    void resolve();
    void finish();

    BusService m_avahi;
    QString m_type;
    Found m_found; // empty while nobody searches
    QString m_browser; // the object of the search
    QList<Item> m_items;
    QList<Service> m_services;
    qsizetype m_unresolved = 0;
    quint64 m_search = 0; // tells answers to a search from those to an earlier one
    QTimer m_limit;
};

} // namespace oz::services
