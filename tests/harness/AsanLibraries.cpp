// Has the address sanitizer take nothing for a leak that the constructors of shared libraries allocate. GLib
// allocates the table of its names so, and replaces it in a program that has many, such as one with GStreamer
// or a test of QML, but keeps the old table for threads that still read it. A suppression cannot tell that
// table from what the program itself forgets: the stacks of both show no more of GLib than g_malloc().

#include <sanitizer/lsan_interface.h>

namespace {

void beforeLibraries(int, char **, char **)
{
    __lsan_disable();
}

// The dynamic linker calls it before all constructors.
__attribute__((section(".preinit_array"), used)) void (*const s_beforeLibraries)(
    int, char **, char **) = beforeLibraries;

// The program's own constructors come after those of its libraries.
__attribute__((constructor)) void afterLibraries()
{
    __lsan_enable();
}

} // namespace
