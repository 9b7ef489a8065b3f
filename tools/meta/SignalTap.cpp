#include "meta/SignalTap.hpp"

#include "meta/MetaDescription.hpp"

namespace oz::meta {

SignalTap::SignalTap(QObject *sender, Handler handler) : m_handler(std::move(handler))
{
    for (const QMetaMethod &method : signalsOf(sender->metaObject())) {
        // These slots are not declared; qt_metacall() receives their numbers, which follow those of QObject.
        const int slot = QObject::staticMetaObject.methodCount() + int(m_signals.size());
        if (QMetaObject::connect(sender, method.methodIndex(), this, slot, Qt::DirectConnection))
            m_signals.push_back(method);
    }
}

int SignalTap::qt_metacall(QMetaObject::Call call, int id, void **arguments)
{
    const int slot = QObject::qt_metacall(call, id, arguments);
    if (slot < 0 || call != QMetaObject::InvokeMetaMethod || std::size_t(slot) >= m_signals.size())
        return slot;
    const QMetaMethod signal = m_signals[std::size_t(slot)];
    QVariantList values;
    for (int i = 0; i < signal.parameterCount(); ++i) {
        const QMetaType type = signal.parameterMetaType(i);
        values.append(type.id() == QMetaType::QVariant ? *static_cast<const QVariant *>(arguments[i + 1])
                                                       : QVariant(type, arguments[i + 1]));
    }
    m_handler(signal, values);
    return -1;
}

} // namespace oz::meta
