#pragma once

#include <functional>
#include <string>

/*! The cost of an update of a file without anything on top: the system calls of a publish and of a notified
 * read. */
namespace oz::bench {

/*! Replaces the content of a file that is there as a publisher does, with the same system calls. */
class BareFile
{
public:
    explicit BareFile(const std::string &path);
    ~BareFile();
    BareFile(const BareFile &) = delete;
    BareFile &operator=(const BareFile &) = delete;

    void replace(const std::string &content);

private:
    std::string m_path;
    std::string m_temporary;
    int m_held = -1;
};

/*! Watches the directory of \a path and reads the file at each change, for good. */
[[noreturn]] void followFile(const std::string &path, const std::function<void()> &changed);

} // namespace oz::bench
