#include "Processes.hpp"

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace oz::bench {

double now()
{
    timespec time;
    ::clock_gettime(CLOCK_MONOTONIC, &time);
    return double(time.tv_sec) * 1e6 + double(time.tv_nsec) / 1e3;
}

void Bell::ring() const
{
    const double heard = now();
    if (::write(m_descriptor, &heard, sizeof heard) != sizeof heard)
        ::_exit(1);
}

Listener::Listener(const char *program, const std::vector<std::string> &words)
{
    int ends[2];
    if (::pipe(ends) < 0)
        std::abort();
    const std::string bell = std::to_string(ends[1]);
    std::vector<const char *> call{program, "--role", bell.c_str()};
    for (const std::string &word : words)
        call.push_back(word.c_str());
    call.push_back(nullptr);
    m_pid = ::fork();
    if (m_pid == 0) {
        ::prctl(PR_SET_PDEATHSIG, SIGKILL);
        ::execv(program, const_cast<char *const *>(call.data()));
        ::_exit(127);
    }
    ::close(ends[1]);
    m_bell = ends[0];
    (void)heardAt();
}

Listener::~Listener()
{
    ::kill(m_pid, SIGKILL);
    ::waitpid(m_pid, nullptr, 0);
    ::close(m_bell);
}

double Listener::heardAt() const
{
    double heard = 0;
    if (::read(m_bell, &heard, sizeof heard) != sizeof heard) {
        std::fprintf(stderr, "bench: a listener died\n");
        std::exit(1);
    }
    return heard;
}

PrivateBus::PrivateBus()
{
    m_daemon.start("dbus-daemon", {"--session", "--nofork", "--print-address"});
    if (!m_daemon.waitForReadyRead()) {
        std::fprintf(stderr, "bench: dbus-daemon: %s\n", qPrintable(m_daemon.errorString()));
        std::exit(1);
    }
    qputenv("DBUS_SESSION_BUS_ADDRESS", m_daemon.readLine().trimmed());
}

PrivateBus::~PrivateBus()
{
    m_daemon.kill();
    m_daemon.waitForFinished();
}

} // namespace oz::bench
