#pragma once

#include <QHash>
#include <QMap>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QTimer>
#include <QVariantMap>

#include <chrono>
#include <memory>
#include <optional>
#include <sys/types.h>

namespace oz::services {

class StateStore;
class TreeObject;

/*! The services' objects in the tree, and those that could not be written yet. */
class Tree : public QObject
{
    Q_OBJECT

public:
    /*! Services keep the state that outlives them in \a store. */
    explicit Tree(StateStore &store) : m_store(store) { }

    [[nodiscard]] StateStore &store() const { return m_store; }

    /*! While the services start, what can never be put into the tree is an Error that keeps them from it. */
    [[nodiscard]] bool isStarting() const { return m_isStarting; }
    void endStart() { m_isStarting = false; }

    /*! The group whose members, beside root and the services' own user, may ask for what acts for everybody;
     * nothing where everybody may. */
    [[nodiscard]] std::optional<gid_t> trustedGroup() const { return m_trustedGroup; }
    void setTrustedGroup(std::optional<gid_t> group) { m_trustedGroup = group; }

    /*! The facilities that the same source fed when the daemon died: what was published then holds until
     * their sources are known, or away for too long. */
    void setContinued(const QStringList &facilities) { m_continued = facilities; }
    [[nodiscard]] bool isContinued(const QString &facility) const { return m_continued.contains(facility); }

    /*! The paths of all objects that the services have. */
    [[nodiscard]] QStringList objects() const { return m_objects.keys(); }
    /*! True if the tree holds everything as it should be. */
    [[nodiscard]] bool isTrue() const { return m_problems.isEmpty(); }
    /*! The objects that could not be written, with the reason, by path. Each is tried again until it is. */
    [[nodiscard]] const QMap<QString, QString> &problems() const { return m_problems; }
    /*! problems() in a line; empty where there are none. */
    [[nodiscard]] QString problemText() const;

    /*! The attributes that the services last told under \a path, whether or not they could be written. */
    [[nodiscard]] QVariantMap told(const QString &path) const { return m_told.value(path); }
    /*! To be called where something is told under \a path. */
    void tell(const QString &path, const QVariantMap &attributes);

Q_SIGNALS:
    void problemsChanged();
    /*! told() of \a path has changed. */
    void toldAnew(const QString &path);
    /*! A client has connected to the served object or device at \a path. */
    void opened(const QString &path);
    /*! A client has sent a message to the served object at \a path, or a line, which has no attributes, to
     * the device there. */
    void asked(const QString &path, const QVariantMap &attributes);
    /*! The object at \a path is put into the tree, for which its present content may be read. */
    void aboutToPut(const QString &path);
    /*! That is done, or has failed. */
    void hasPut(const QString &path);

private:
    friend class TreeObject;
    void add(const QString &path);
    void remove(const QString &path);
    void setProblem(const QString &path, const QString &problem);

    StateStore &m_store;
    QMap<QString, int> m_objects; // how many publish each
    QMap<QString, QString> m_problems;
    QHash<QString, QVariantMap> m_told;
    QStringList m_continued;
    std::optional<gid_t> m_trustedGroup;
    bool m_isStarting = true;
};

/*!
 * An object of the tree that is put there until it is there: a file system that is full, or descriptors that
 * are used up, keep it from that for a while only. It is tried with growing pauses, and the log tells when it
 * begins to fail and when it is done.
 */
class TreeObject
{
public:
    virtual ~TreeObject();
    TreeObject(const TreeObject &) = delete;
    TreeObject &operator=(const TreeObject &) = delete;

    [[nodiscard]] const QString &path() const { return m_path; }

protected:
    TreeObject(Tree &tree, const QString &path);

    struct Failure
    {
        int error = 0;
        QString text;
    };
    /*! Puts the object into the tree as it shall be now. */
    virtual Failure put() = 0;
    /*! Calls put(), and again later where it fails; throws Error while the services start, where there is no
     * hope. */
    void attempt();
    [[nodiscard]] Tree &tree() const { return m_tree; }

private:
    void retryLater();

    Tree &m_tree;
    QString m_path;
    std::unique_ptr<QTimer> m_retry;
    std::chrono::milliseconds m_pause{}; // before the next attempt
    bool m_isFailing = false;
};

} // namespace oz::services
