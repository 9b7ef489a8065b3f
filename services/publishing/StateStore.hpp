#pragma once

#include "publishing/WarnOnce.hpp"

#include <QByteArray>
#include <QHash>
#include <QString>
#include <QVariantMap>

namespace oz::services {

/*!
 * The state that a restarted daemon needs: a file for each name, beside the tree and for its user
 * alone. It goes with the tree, so a device that starts anew begins anew.
 */
class StateStore
{
public:
    /*! Keeps everything in memory alone. */
    StateStore() = default;
    /*! Keeps it in the folder \a folder of the tree ("/pps/..."), which is made where it is not there. */
    explicit StateStore(const QString &folder) : m_folder(folder) { }

    /*! Where \a name is saved, for people. */
    [[nodiscard]] QString placeOf(const QString &name) const;
    /*! The state saved under \a name; empty where there is none, or where it cannot be read, of which the log
     * tells. */
    [[nodiscard]] QVariantMap load(const QString &name) const;
    /*! Saves \a state in one step; what was saved last is not written again. */
    void save(const QString &name, const QVariantMap &state);
    /*! Forgets everything. */
    void clear();

private:
    [[nodiscard]] QString fileOf(const QString &name) const;

    QString m_folder;
    QHash<QString, QByteArray> m_saved;
    WarnOnce m_warn;
};

} // namespace oz::services
