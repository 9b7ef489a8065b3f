#pragma once

#include "files/TreeFolder.hpp"
#include "pps/PpsChanges.hpp"
#include "pps/PpsSnapshot.hpp"

#include <QByteArray>
#include <QString>

#include <optional>

namespace oz {

class PlaceLock;

/*!
 * Publishes one state object, a file that is replaced as a whole. It remembers what it published last, and
 * the folder, and looks at nothing again while that stands.
 */
class PpsStateWriter
{
public:
    /*! Permission for a publish to make an object that is not there. */
    enum class Create { No, Yes };

    /*! For the object whose place is \a file, as devicePath() gives it. */
    explicit PpsStateWriter(const QByteArray &file) : m_file(file), m_name(nameOf(file)) { }

    /*!
     * Publishes the lines of \a update; 0 or the errno. Where nothing changes, nothing is written and nobody
     * is woken. A new object gets \a mode, and its folders are made; a present one keeps its mode where it
     * keeps its attributes, and its owner and group where the publisher may give them.
     */
    [[nodiscard]] int publish(const QByteArray &update, PpsMerge merge, Create create, mode_t mode);

    /*! Takes the object away; 0 or the errno. */
    [[nodiscard]] int remove();

    /*! The reason for the last failure, where it says more than the errno; else empty. */
    [[nodiscard]] QString problem() const { return m_problem; }

private:
    enum class Step { Done, Again };
    struct Change;

    [[nodiscard]] int attempt(Change *change, Step *step);
    [[nodiscard]] int prepare(Change *change);
    [[nodiscard]] bool isThere(const Change &change) const;
    [[nodiscard]] int openFolder(Create create);
    [[nodiscard]] int load();
    [[nodiscard]] int commit(PlaceLock *lock, const Change &change);
    [[nodiscard]] int explain(int error);
    void forget();

    const QByteArray m_file;
    const QByteArray m_name;
    TreeFolder m_folder;
    std::optional<PpsSnapshot> m_known; // the object as it was seen last; only with an open folder
    UniqueFd m_held; // its file, so that no other has its identity
    QString m_problem;
};

} // namespace oz
