// A /sys of its own for the programs that a test starts: keeps what it is told on standard input, one order a
// line, and answers each with a line: the folder for UMOCKDEV_DIR first, then "ok". To be run under
// umockdev-wrapper.
//   add FILE               the devices that FILE describes
//   set DEVICE NAME VALUE  an attribute, to the end of the line
//   event DEVICE ACTION    tells of it
//   remove DEVICE
//   rumble FILE            plays the force feedback of the input device FILE; what is asked of it is told
//   with lines
//                          that begin with "heard"

#include <umockdev.h>

#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <sstream>
#include <string>

#include <linux/input.h>
#include <sys/ioctl.h>

namespace {

// Writes and requests of a program to an input device, in a thread of the library's.
gboolean onIoctl(UMockdevIoctlBase *, UMockdevIoctlClient *client, gpointer)
{
    UMockdevIoctlData *argument = umockdev_ioctl_client_get_arg(client);
    const auto request = umockdev_ioctl_client_get_request(client);
    if (request == EVIOCSFF) {
        GError *error = nullptr;
        UMockdevIoctlData *data = umockdev_ioctl_data_resolve(argument, 0, sizeof(ff_effect), &error);
        int size = 0;
        guint8 *bytes = nullptr;
        umockdev_ioctl_data_retrieve(data, &bytes, &size);
        auto *effect = reinterpret_cast<ff_effect *>(bytes);
        effect->id = effect->id < 0 ? 0 : effect->id;
        std::cout << "heard effect " << effect->u.rumble.strong_magnitude << std::endl;
        umockdev_ioctl_data_update(data, 0, bytes, size);
        g_free(bytes);
        umockdev_ioctl_data_unref(data);
        umockdev_ioctl_client_complete(client, 0, 0);
        return TRUE;
    }
    if (request == EVIOCRMFF)
        std::cout << "heard remove" << std::endl;
    umockdev_ioctl_client_complete(client, 0, 0);
    return TRUE;
}

gboolean onWrite(UMockdevIoctlBase *, UMockdevIoctlClient *client, gpointer)
{
    int size = 0;
    guint8 *bytes = nullptr;
    umockdev_ioctl_data_retrieve(umockdev_ioctl_client_get_arg(client), &bytes, &size);
    if (size == int(sizeof(input_event)))
        std::cout << "heard play " << reinterpret_cast<input_event *>(bytes)->value << std::endl;
    g_free(bytes);
    umockdev_ioctl_client_complete(client, size, 0);
    return TRUE;
}

} // namespace

int main()
{
    UMockdevTestbed *testbed = umockdev_testbed_new();
    if (!umockdev_in_mock_environment()) {
        std::cerr << "libumockdev-preload.so.0 is not there; the Debian package 'umockdev' has it"
                  << std::endl;
        g_object_unref(testbed);
        return 1;
    }
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
        else if (order == "rumble") {
            UMockdevIoctlBase *rumbler = umockdev_ioctl_base_new();
            g_signal_connect(rumbler, "handle-ioctl", G_CALLBACK(onIoctl), nullptr);
            g_signal_connect(rumbler, "handle-write", G_CALLBACK(onWrite), nullptr);
            umockdev_testbed_attach_ioctl(testbed, device.c_str(), rumbler, &error);
        } else
            umockdev_testbed_remove_device(testbed, device.c_str());
        std::cout << (error ? error->message : "ok") << std::endl;
        g_clear_error(&error);
    }
    g_object_unref(testbed);
}
