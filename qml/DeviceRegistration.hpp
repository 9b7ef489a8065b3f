#pragma once

#include "EnumHolder.hpp"

#include <oz/device/MiracastManager.hpp>

#include <QtQml/qqml.h>

// Registers a class as the QML type of its name, from a minor version of the module on.
#define OZ_CLASS(NAME, MINOR)                                                                                \
    struct NAME##Type##MINOR                                                                                 \
    {                                                                                                        \
        Q_GADGET                                                                                             \
        QML_FOREIGN(oz::device::NAME)                                                                        \
        QML_NAMED_ELEMENT(NAME)                                                                              \
        QML_ADDED_IN_VERSION(1, MINOR)                                                                       \
    };

// Registers the holder of an enumeration: Holder.Enumerator is a value, and Holder.keyOf() names one. QML's
// tools know an extension only if it is registered too, and a base only by its full name.
#define OZ_ENUMERATION(NAME)                                                                                 \
    namespace NAME##Names                                                                                    \
    {                                                                                                        \
        Q_NAMESPACE                                                                                          \
        QML_FOREIGN_NAMESPACE(oz::device::NAME)                                                              \
        QML_ANONYMOUS                                                                                        \
        QML_ADDED_IN_VERSION(1, 0)                                                                           \
    }                                                                                                        \
    class NAME##Holder : public oz::qml::EnumHolder                                                          \
    {                                                                                                        \
        Q_OBJECT                                                                                             \
        QML_NAMED_ELEMENT(NAME)                                                                              \
        QML_SINGLETON                                                                                        \
        QML_EXTENDED_NAMESPACE(oz::device::NAME)                                                             \
        QML_ADDED_IN_VERSION(1, 0)                                                                           \
    public:                                                                                                  \
        explicit NAME##Holder(QObject *parent = nullptr)                                                     \
            : EnumHolder(oz::device::NAME::staticMetaObject, parent)                                         \
        {                                                                                                    \
        }                                                                                                    \
    };

// QML binds a handler to the last signal of a name, which is the twin with numbers. All twins are emitted
// together except this one, so instances that QML creates forward it.
template <>
inline void QQmlPrivate::createInto<oz::device::MiracastManager>(void *memory, void *)
{
    using oz::device::MiracastManager;
    using oz::device::MiracastStatus;
    auto *manager = new (memory) QQmlElement<MiracastManager>;
    QObject::connect(manager, qOverload<MiracastStatus::Type>(&MiracastManager::statusChanged), manager,
        qOverload<int>(&MiracastManager::statusChanged));
}
