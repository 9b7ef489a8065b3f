#pragma once

#include "linux/BusService.hpp"

#include <QDBusObjectPath>
#include <QMap>
#include <QStringList>
#include <QVariantMap>

namespace oz::services {

/*!
 * The properties of a service's objects, kept up to date: read once, and then
 * followed. Nobody waits for the service; one that does not answer is absent until it does.
 */
class BusObjects : public QObject
{
    Q_OBJECT

public:
    using Interfaces = QMap<QString, QVariantMap>; //!< the properties, by the interface's name

    /*! Follows what follow() names, or all objects of the service's object manager at \a manager. */
    explicit BusObjects(BusService &service, const QString &manager = {});

    /*! Follows these interfaces of the objects that a method lists, each time the service appears. */
    void followList(
        const QString &path, const QString &interface, const QString &method, const QStringList &interfaces);
    /*! Follows these interfaces of an object, until it is forgotten or the service goes. */
    void follow(const QString &path, const QStringList &interfaces);
    void forget(const QString &path);

    /*! By their paths. */
    [[nodiscard]] const QMap<QString, Interfaces> &all() const { return m_objects; }
    /*! A property; invalid where there is none. */
    [[nodiscard]] QVariant property(const QString &path, const QString &interface, const QString &name) const
    {
        return m_objects.value(path).value(interface).value(name);
    }
    /*! True once the properties of all followed objects have come. */
    [[nodiscard]] bool isComplete() const { return m_isKnown && m_asked == 0; }

Q_SIGNALS:
    /*! Something has changed, and all is told. */
    void changed();
    /*! The service does not answer what it is asked for. */
    void failed(const QString &reason);

private:
    void onAppeared();
    void onVanished();
    void readAll();
    void readManager();
    void readList();
    void read(const QString &path, const QString &interface);
    void onPropertiesChanged(const QDBusMessage &message);
    void onInterfacesAdded(const QDBusMessage &message);
    void onInterfacesRemoved(const QDBusMessage &message);
    void onAnswered();
    void onFailed(const QDBusMessage &error);

    BusService &m_service;
    struct List
    {
        QString path;
        QString interface;
        QString method;
        QStringList interfaces; // of the objects in it
    };

    QString m_manager;
    std::optional<List> m_list;
    QMap<QString, Interfaces> m_objects;
    int m_asked = 0; // answers that are still to come
    bool m_isKnown = false;
    QTimer m_askAgain;
};

} // namespace oz::services
