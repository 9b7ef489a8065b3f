// A /sys of its own for the programs that a test starts: keeps what it is told on standard input, one order a
// line, and answers each with a line: the folder for UMOCKDEV_DIR first, then "ok". To be run under
// umockdev-wrapper.
//   add FILE               the devices that FILE describes
//   set DEVICE NAME VALUE  an attribute, to the end of the line
//   event DEVICE ACTION    tells of it
//   remove DEVICE

#include <umockdev.h>

#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <sstream>
#include <string>

int main()
{
    UMockdevTestbed *testbed = umockdev_testbed_new();
    char *folder = umockdev_testbed_get_root_dir(testbed);
    std::cout << folder << std::endl;
    std::free(folder);
    for (std::string line; std::getline(std::cin, line);) {
        std::istringstream words(line);
        std::string order;
        std::string device;
        std::string name;
        words >> order >> device >> name;
        std::string value;
        std::getline(words >> std::ws, value);
        GError *error = nullptr;
        if (order == "add")
            umockdev_testbed_add_from_file(testbed, device.c_str(), &error);
        else if (order == "set")
            umockdev_testbed_set_attribute(testbed, device.c_str(), name.c_str(), value.c_str());
        else if (order == "event")
            umockdev_testbed_uevent(testbed, device.c_str(), name.c_str());
        else
            umockdev_testbed_remove_device(testbed, device.c_str());
        std::cout << (error ? error->message : "ok") << std::endl;
        g_clear_error(&error);
    }
    g_object_unref(testbed);
}
