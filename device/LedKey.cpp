#include "LedKey.hpp"

#include <QMutexLocker>
#include <QRecursiveMutex>

namespace oz::device {

namespace {

QRecursiveMutex s_keyMutex;
quint64 s_key = 0;

} // namespace

QString createKey()
{
    const QMutexLocker lock(&s_keyMutex);
    return QString::number(++s_key, 10);
}

} // namespace oz::device
