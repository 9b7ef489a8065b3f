#pragma once

#include "pps/PpsLines.hpp"

#include <QByteArray>
#include <QString>

#include <optional>

namespace oz {

/*! A path with its options, "/pps/dir/name?wait,delta,f=a+b", taken apart. */
struct PpsPath
{
    QString device; //!< "/pps/dir/name", without the options
    QByteArray name; //!< "name"
    PpsNames filter; //!< empty: every attribute
    bool delta = false;
    bool wait = false;

    /*!
     * Takes \a text apart; nothing where it names no object: it has to begin with "/", have no empty, "." or
     * ".." component and no component that begins with "." (those are reserved for files under construction),
     * and its options have to be "wait", "delta" or "f=" with at least one name.
     */
    static std::optional<PpsPath> parse(const QString &text);

    /*! The place in the file system, under the device root as it is now. */
    [[nodiscard]] QByteArray filePath() const;
};

} // namespace oz
