#pragma once

#include <QString>

#include <chrono>
#include <optional>
#include <vector>

namespace oz::tools {

/*! An object of the tree as it lies there. */
struct TreeObject
{
    QString path;
    /*! How long ago it was published; nothing for one that a service serves. */
    std::optional<std::chrono::seconds> age;
};

/*! Every object of the tree that this user sees, by path. */
[[nodiscard]] std::vector<TreeObject> treeObjects();

/*! How long ago the object at \a path was published; nothing where there is none, or it is served. */
[[nodiscard]] std::optional<std::chrono::seconds> ageOf(const QString &path);

/*! "12 s", "3 min", "5 h", "2 days". */
[[nodiscard]] QString ageText(std::chrono::seconds age);

/*! The device path that \a word names: itself, or what follows "/pps/". */
[[nodiscard]] QString ppsPath(const QString &word);

} // namespace oz::tools
