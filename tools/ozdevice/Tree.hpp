#pragma once

#include <QString>

#include <chrono>
#include <optional>
#include <vector>

namespace oz::tools {

/*! An object of the tree, and the time since it was published; no time for one that a service serves. */
struct ObjectAge
{
    QString path;
    std::optional<std::chrono::seconds> age;
};

/*! Every object of the tree that this user sees, sorted by path. */
[[nodiscard]] std::vector<ObjectAge> objectAges();

/*! The time since the object at \a path was published; none if it is served or does not exist. */
[[nodiscard]] std::optional<std::chrono::seconds> ageOf(const QString &path);

/*! "12 s", "3 min", "5 h", "2 days". */
[[nodiscard]] QString ageText(std::chrono::seconds age);

/*! The device path for \a word, which is one, or a path below "/pps/". */
[[nodiscard]] QString ppsPath(const QString &word);

} // namespace oz::tools
