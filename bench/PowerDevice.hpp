#pragma once

#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace oz::bench {

/*! The power manager's device as bare as can be: greets each client with its status, and sends what it is
 * told. */
class PowerDevice
{
public:
    PowerDevice();
    ~PowerDevice();
    PowerDevice(const PowerDevice &) = delete;
    PowerDevice &operator=(const PowerDevice &) = delete;

    /*! Sends every client the status \a value. */
    void send(const std::string &value);

private:
    int m_socket;
    std::mutex m_mutex;
    std::vector<int> m_clients;
    std::thread m_thread;
};

} // namespace oz::bench
