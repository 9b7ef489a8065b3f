#pragma once

#include "facility/IdentifierMask.hpp"

#include <QElapsedTimer>
#include <QHash>
#include <QJsonValue>
#include <QStringList>
#include <QVariantMap>

namespace oz::services {

class Tree;

/*!
 * The scenario that a recording writes: the orders that lead the simulated phone through what the tree tells,
 * and what the phone must have for them to make sense.
 */
class RecordedScript
{
public:
    RecordedScript(const Tree &tree, bool keepsIdentifiers);

    /*! The attributes of the object at \a path. */
    [[nodiscard]] QVariantMap told(const QString &path) const;
    /*! The value "FACILITY.FIELD" that a facility says; invalid where it is not known. */
    [[nodiscard]] QVariant value(const QString &name) const;
    /*! True while the recording begins, so that the phone starts with what is seen now. */
    [[nodiscard]] bool isBeginning() const { return m_isBeginning; }
    void endBeginning() { m_isBeginning = false; }

    /*! Adds an order, of words that may have blanks, as a step. */
    void order(const QStringList &words);
    /*! Adds a line for people as a step. */
    void say(const QString &line);
    /*! The steps so far, each as JSON in a line. */
    [[nodiscard]] const QStringList &steps() const { return m_steps; }
    /*! The phone's file. */
    [[nodiscard]] const QVariantMap &phone() const { return m_phone; }
    /*! Sets \a key in the section of \a facility in the phone's file. */
    void setInPhone(const QString &facility, const QString &key, const QVariant &value);
    /*! The section of \a facility in the phone's file. */
    [[nodiscard]] QVariantMap section(const QString &facility) const
    {
        return m_phone.value(facility).toMap();
    }

    /*! What this recording replaces identifiers of people and devices by. */
    [[nodiscard]] IdentifierMask &mask() { return m_mask; }
    [[nodiscard]] const IdentifierMask &mask() const { return m_mask; }

private:
    void append(const QString &key, const QJsonValue &value);

    const Tree &m_tree;
    IdentifierMask m_mask;
    bool m_isBeginning = true;
    QElapsedTimer m_clock;
    QStringList m_steps;
    QVariantMap m_phone;
};

/*! Records the part of a facility that is no plain setting: devices, networks, displays, which come and go.
 */
class FacilityRecorder
{
public:
    FacilityRecorder() = default;
    FacilityRecorder(const FacilityRecorder &) = delete;
    FacilityRecorder &operator=(const FacilityRecorder &) = delete;
    virtual ~FacilityRecorder() = default;

    /*! Looks at what the tree tells now. \a recorded are the facilities that the recording is of. */
    virtual void sample(RecordedScript &script, const QStringList &recorded) = 0;
};

/*! The devices around the phone in a recording: what the phone's file says of each, by the names that the
 * recording gives them. */
class RecordedDevices
{
public:
    explicit RecordedDevices(const QString &kind) : m_kind(kind) { }

    /*! The name of the device with this hardware address, which is noted where it is new, with the "name" and
     * "type" of \a told. */
    QString note(RecordedScript &script, const QString &address, const QVariantMap &told);
    /*! The keys of the device called \a name in the phone's file. */
    [[nodiscard]] QVariantMap of(const QString &name) const { return m_devices.value(name).toMap(); }
    void set(const QString &name, const QVariantMap &device) { m_devices.insert(name, device); }
    [[nodiscard]] const QVariantMap &all() const { return m_devices; }

private:
    QString m_kind;
    QVariantMap m_devices;
    QHash<QString, QString> m_names; // by address
};

} // namespace oz::services
