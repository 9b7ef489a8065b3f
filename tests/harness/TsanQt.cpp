// Tells the thread sanitizer what it cannot see, as Qt is not built with it: whatever a thread did before it
// posted a call to another happened before the call is delivered. Without this every queued call would look
// like a race.

#include <QMetaObject>
#include <QObject>
#include <QProcess>
#include <QRecursiveMutex>

#include <dlfcn.h>
#include <sanitizer/tsan_interface.h>
#include <utility>

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
bool QRecursiveMutex::tryLock(int timeout) noexcept(noexcept(std::declval<QMutex &>().lock()))
{
    static const auto original = next<bool (*)(QRecursiveMutex *, int)>("_ZN15QRecursiveMutex7tryLockEi");
    const bool locked = original(this, timeout);
    if (locked)
        __tsan_acquire(this);
    return locked;
}

void QRecursiveMutex::unlock() noexcept
{
    static const auto original = next<void (*)(QRecursiveMutex *)>("_ZN15QRecursiveMutex6unlockEv");
    __tsan_release(this);
    original(this);
}

// Without a modifier, Qt starts the child in this process's memory, and what the child never returns from
// would leave the thread that started it unwatched.
void QProcess::start(const QString &program, const QStringList &arguments, OpenMode mode)
{
    static const auto original = next<void (*)(QProcess *, const QString &, const QStringList &, OpenMode)>(
        "_ZN8QProcess5startERK7QStringRK5QListIS0_E6QFlagsIN13QIODeviceBase12OpenModeFlagEE");
    if (!childProcessModifier())
        setChildProcessModifier([] {});
    original(this, program, arguments, mode);
}

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
