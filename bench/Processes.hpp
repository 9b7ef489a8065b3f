#pragma once

#include <QProcess>

#include <string>
#include <sys/types.h>
#include <vector>

/*! The common part of benchmarks between processes. */
namespace oz::bench {

/*! Microseconds of the monotonic clock. */
[[nodiscard]] double now();

/*! Tells the other process that it is there, and then of each change, with the time at which it heard of it.
 */
class Bell
{
public:
    explicit Bell(int descriptor) : m_descriptor(descriptor) { }
    void ring() const;

private:
    int m_descriptor;
};

/*! The other process: this program again, called with "--role", a descriptor for its bell and \a words. */
class Listener
{
public:
    Listener(const char *program, const std::vector<std::string> &words);
    ~Listener();
    Listener(const Listener &) = delete;
    Listener &operator=(const Listener &) = delete;

    /*! Waits for the next ring; the time at which the other process heard the change. */
    [[nodiscard]] double heardAt() const;
    [[nodiscard]] pid_t pid() const { return m_pid; }

private:
    pid_t m_pid = 0;
    int m_bell = -1;
};

/*! A message bus of this run's own, which is its session bus for the life of the instance. */
class PrivateBus
{
public:
    PrivateBus();
    ~PrivateBus();

private:
    QProcess m_daemon;
};

} // namespace oz::bench
