#pragma once

#include <oz/OzSupportGlobal.hpp>

#include <QFlags>
#include <QObject>

namespace oz {

/*! The purposes of opening a PPS object. Holds the enumeration only; it has no instances. */
class OZ_SUPPORT_EXPORT PpsOpenMode
{
    Q_GADGET

public:
    /*! The values. */
    enum Type {
        Publish = 1, //!< write only
        Subscribe = 2, //!< read only
        PublishSubscribe = 3, //!< read and write
    };
    Q_DECLARE_FLAGS(Types, Type)
    Q_FLAG(Types)

    PpsOpenMode() = delete;
};
Q_DECLARE_OPERATORS_FOR_FLAGS(PpsOpenMode::Types)

} // namespace oz
