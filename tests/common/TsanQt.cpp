// Tells the thread sanitizer what it cannot see, as Qt is not built with it: whatever a thread did before it
// posted a call to another happened before the call is delivered. Without this every queued call would look
// like a race.

#include <QMetaObject>
#include <QObject>

#include <dlfcn.h>
#include <sanitizer/tsan_interface.h>

namespace {

char s_posted; // one point of order for all events

bool beforeDelivery(void **)
{
    __tsan_acquire(&s_posted);
    return false; // the event goes on
}

[[maybe_unused]] const bool s_registered =
    QInternal::registerCallback(QInternal::EventNotifyCallback, &beforeDelivery);

template <typename Function>
Function next(const char *mangled)
{
    return reinterpret_cast<Function>(::dlsym(RTLD_NEXT, mangled));
}

} // namespace

// Stand before Qt's own functions of the same name, and call them.
bool QMetaObject::invokeMethodImpl(
    QObject *object, QtPrivate::QSlotObjectBase *slot, Qt::ConnectionType type, void *result)
{
    static const auto original = next<decltype(&QMetaObject::invokeMethodImpl)>(
        "_ZN11QMetaObject16invokeMethodImplEP7QObjectPN9QtPrivate15QSlotObjectBaseEN2Qt14ConnectionTypeEPv");
    __tsan_release(&s_posted);
    return original(object, slot, type, result);
}

void QMetaObject::activate(QObject *sender, const QMetaObject *type, int signal, void **arguments)
{
    static const auto original = next<void (*)(QObject *, const QMetaObject *, int, void **)>(
        "_ZN11QMetaObject8activateEP7QObjectPKS_iPPv");
    __tsan_release(&s_posted);
    original(sender, type, signal, arguments);
}
