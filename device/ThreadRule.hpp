#pragma once

class QObject;

namespace oz::device {

/*!
 * Ends the program when \a object is moved to another thread, with a message that names the class. Without
 * it, Qt crashes later and elsewhere: the event loop of the thread that created the object watches
 * descriptors for it. Every class calls this as it constructs an instance. Without OZ_ASSERTIONS it does
 * nothing.
 */
#ifdef OZ_ASSERTIONS
void keepOnThread(QObject *object);
#else
inline void keepOnThread(QObject * /*object*/) { }
#endif

} // namespace oz::device
