#pragma once

#include <oz/DisplayTree.hpp>

#include <QElapsedTimer>
#include <QHash>
#include <QMap>
#include <QObject>
#include <QStringList>
#include <QVariantMap>

#include <optional>

namespace oz::services {

class Tree;
struct Facility;
struct Setting;

/*!
 * Writes down what a device does, whoever feeds its facilities, as a scenario that leads the simulated phone
 * through the same values: what the tree tells, as it changes. What identifies a person or a device is
 * masked, the same always by the same, unless it is to be kept.
 */
class Recorder : public QObject
{
    Q_OBJECT

public:
    /*! The facilities that can be recorded; the others are what applications do, or what they ask for. */
    [[nodiscard]] static QStringList facilities();

    /*! Begins with what \a tree tells now. \a facilities are some of facilities(); throws Error for others.
     */
    Recorder(const Tree &tree, const QStringList &facilities, bool keepsIdentifiers);

    /*! The scenario's steps so far, each as JSON in a line. */
    [[nodiscard]] const QStringList &steps() const { return m_steps; }
    /*! Whether the steps, or the phone, have something else in place of what identifies somebody. */
    [[nodiscard]] bool hasMasked() const { return m_hasMasked; }
    /*! The scenario's phone: what it must have for the steps to make sense. */
    [[nodiscard]] QVariantMap phone() const;

private:
    /*! Wi-Fi Direct as it is told; peers by their names in the recording's phone. */
    struct WiFiDirectNow
    {
        bool supported = true;
        bool enabled = true;
        bool scanning = false;
        bool connecting = false;
        QString role = QStringLiteral("none"); //!< in a group: "owner", "client" or "none"
        QStringList members = {}; //!< of it, beside the phone; the owner first
        QStringList visible = {};
    };
    /*! Miracast as it is told; sinks by their names in the recording's phone. */
    struct MiracastNow
    {
        int stop = 0; //!< the code of why the service does not run
        QStringList visible = {};
        QString connecting = {};
        QString sink = {}; //!< of the session
        bool isPaused = false;
    };

    void sample();
    void recordSettings(const Facility &facility);
    [[nodiscard]] std::optional<QVariant> valueSeen(const Facility &facility, const Setting &setting);
    void recordDisplay();
    void recordNetwork();
    void recordDataProfile();
    void recordWiFiDirect();
    void orderWiFiDirect(const WiFiDirectNow &now);
    void recordMiracast();
    void orderMiracast(const MiracastNow &now);
    QString noteDevice(
        QVariantMap *known, const QString &kind, const QString &address, const QVariantMap &map);
    QString notePeer(const QVariantMap &map, bool isMember);
    void noteGroup(const QVariantMap &connection, const WiFiDirectNow &now);
    QString noteSink(const QVariantMap &map);

    [[nodiscard]] QVariant now(const QString &name) const { return m_now.value(name); }
    /*! Whether the value is known, and was not the same before. */
    [[nodiscard]] bool isNew(const QString &name) const;
    [[nodiscard]] bool isTrue(const QString &name) const { return now(name).toBool(); }
    /*! Adds an order, of words that may have blanks. */
    void order(const QStringList &words);
    /*! Adds "BEGIN on" or "BEGIN off" where a value that is true or false is new. */
    void orderOnOff(const QString &name, const QStringList &begin);
    /*! \a text, or what stands for it everywhere in this recording: "KIND-1", or as many digits. */
    [[nodiscard]] QString masked(const QString &kind, const QString &text);
    [[nodiscard]] QString maskedAddress(const QString &address);
    [[nodiscard]] int maskedNumber(const QString &kind, int number);
    [[nodiscard]] QString maskedDigits(const QString &text, qsizetype kept);

    const Tree &m_tree;
    QStringList m_facilities;
    bool m_keepsIdentifiers;
    bool m_hasMasked = false;
    QElapsedTimer m_clock;
    bool m_isFirst = true;
    bool m_isPlanned = false;
    QVariantMap m_before; // the public values
    QVariantMap m_now;
    QStringList m_steps;
    QVariantMap m_phone;
    QHash<QString, QStringList> m_masked; // by kind; their places are their numbers
    QVariantMap m_recorded; // what each setting was told last
    DisplayTree::Displays m_displays;
    QList<std::pair<QVariantMap, QString>> m_networks; // what each is like, and its name
    QString m_serving;
    QVariantMap m_peers; // as the phone's file has them
    QVariantMap m_sinks;
    QHash<QString, QString> m_deviceKeys; // what each of those is known by
    WiFiDirectNow m_wifi;
    MiracastNow m_miracast;
};

} // namespace oz::services
