#pragma once

#include "linux/BusObjects.hpp"

#include <QSet>

#include <ModemManager.h>

namespace oz::services {

/*! The interfaces of ModemManager's objects. */
inline const QString ModemInterface = QStringLiteral(MM_DBUS_INTERFACE_MODEM);
inline const QString Modem3gppInterface = QStringLiteral(MM_DBUS_INTERFACE_MODEM_MODEM3GPP);
inline const QString VoiceInterface = QStringLiteral(MM_DBUS_INTERFACE_MODEM_VOICE);
inline const QString CardInterface = QStringLiteral(MM_DBUS_INTERFACE_SIM);

/*! ModemManager, which several facilities ask: its modems, each with its SIM card. */
class ModemManager : public QObject
{
    Q_OBJECT

public:
    explicit ModemManager(std::shared_ptr<SystemBus> bus);

    /*!
     * The modem that \a wanted names, by its number, port, device or equipment identifier; where it names
     * none the one at \a present while there is one, else the first. Empty where there is none.
     */
    [[nodiscard]] QString modem(const QString &wanted, const QString &present) const;
    /*! A property of a modem or a card, as in BusObjects. */
    [[nodiscard]] QVariant property(const QString &path, const QString &interface, const QString &name) const
    {
        return m_objects.property(path, interface, name);
    }
    [[nodiscard]] bool has(const QString &path, const QString &interface) const
    {
        return m_objects.all().value(path).contains(interface);
    }
    /*!
     * True if its answers can be believed: a service, or a modem, that has just come says for a while what
     * it is not.
     */
    [[nodiscard]] bool isSettled() const { return m_objects.isComplete() && !m_settling.isActive(); }
    /*! Why it is absent; empty while it is there. */
    [[nodiscard]] const QString &absence() const { return m_absence; }

    /*! Follows a SIM card, which the list of objects does not name. */
    void followCard(const QString &path);
    void call(const QString &path, const QString &interface, const QString &method,
        const QVariantList &arguments, QObject *context, const BusService::Answered &answered)
    {
        m_service.call(path, interface, method, arguments, context, answered);
    }

Q_SIGNALS:
    /*! Something has changed, and isSettled(), or absence() has. */
    void changed();

private:
    void readState();
    [[nodiscard]] QStringList modems() const;
    [[nodiscard]] bool isStarting() const;

    BusService m_service;
    BusObjects m_objects;
    QString m_absence;
    QSet<QString> m_cards;
    bool m_hadModem = false;
    QTimer m_settling; // until nothing has changed for a while
    QTimer m_startLimit; // how long it may take altogether
};

/*! A source, of the type \a SourceType, about one of ModemManager's modems. */
template <typename SourceType>
class ModemSource : public SourceType
{
protected:
    /*! The \a wanted modem, as in ModemManager::modem(). */
    ModemSource(std::shared_ptr<ModemManager> manager, const QString &wanted)
        : m_manager(std::move(manager)), m_wanted(wanted)
    {
        QObject::connect(m_manager.get(), &ModemManager::changed, this, [this] { onChanged(); });
        // Another source may have made it know something already.
        QMetaObject::invokeMethod(
            this, [this] { onChanged(); }, Qt::QueuedConnection);
    }

    /*! Called whenever the modem, or something about it, has changed: for know() or setAbsent(). */
    virtual void readState() = 0;

    [[nodiscard]] ModemManager &manager() { return *m_manager; }
    [[nodiscard]] const QString &path() const { return m_path; }
    /*! A property of the modem. */
    [[nodiscard]] QVariant of(const QString &interface, const char *name) const
    {
        return m_manager->property(m_path, interface, QLatin1String(name));
    }

private:
    void onChanged()
    {
        if (!m_manager->absence().isEmpty()) {
            this->setAbsent(m_manager->absence());
            return;
        }
        if (!m_manager->isSettled())
            return;
        m_path = m_manager->modem(m_wanted, m_path);
        if (!m_path.isEmpty())
            readState();
        else if (m_wanted.isEmpty())
            this->setAbsent(QStringLiteral("ModemManager knows no modem"));
        else
            this->setAbsent(QLatin1String("ModemManager knows no modem '") + m_wanted + u'\'');
    }

    std::shared_ptr<ModemManager> m_manager;
    QString m_wanted;
    QString m_path;
};

} // namespace oz::services
