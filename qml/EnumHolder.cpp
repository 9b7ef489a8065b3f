#include "EnumHolder.hpp"

#include <cmath>
#include <limits>

namespace oz::qml {

EnumHolder::EnumHolder(const QMetaObject &holder, QObject *parent) : QObject(parent)
{
    for (int i = 0; i < holder.enumeratorCount() && !m_enumeration.isFlag(); ++i)
        m_enumeration = holder.enumerator(i);
}

QString EnumHolder::keyOf(double value) const
{
    using Limits = std::numeric_limits<int>;
    if (!(value >= Limits::min() && value <= Limits::max()) || value != std::trunc(value))
        return {};
    const int number = int(value);
    if (!m_enumeration.isFlag())
        return QString::fromLatin1(m_enumeration.valueToKey(number));
    const QByteArray keys = m_enumeration.valueToKeys(number);
    const bool isComplete = m_enumeration.keysToValue(keys) == number;
    return isComplete ? QString::fromLatin1(keys) : QString();
}

} // namespace oz::qml
