#pragma once

#include <functional>
#include <string>

/*! What an update of a file costs without anything on top: the system calls of a publish and of a notified
 * read. */
namespace oz::bench {

/*! Replaces the content of \a path as a publisher does, with the same system calls. */
void replaceFile(const std::string &path, const std::string &content);

/*! Watches the directory of \a path and reads the file at each change, for good. */
[[noreturn]] void followFile(const std::string &path, const std::function<void()> &changed);

} // namespace oz::bench
