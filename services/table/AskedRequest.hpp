#pragma once

#include "table/ValueType.hpp"

#include <QList>
#include <QVariantMap>

#include <functional>

namespace oz::services {

/*! Something that applications ask of a facility, as scenarios and tests expect it. */
struct AskedRequest
{
    struct Part
    {
        QString name;
        ValueType type;
        QString member = {}; //!< of the message's data, that has it; the name where it is empty
    };
    /*! The parts of a message to the object at \a path; invalid where the message is another request. */
    using Read = std::function<QVariant(const QString &path, const QVariantMap &message)>;

    QString name; //!< "flash"
    QList<Part> parts;
    QString help;
    Read read;

    /*! One that messages to \a path name \a message. */
    [[nodiscard]] static AskedRequest named(const char *name, const QString &path, const char *message,
        const char *help, const QList<Part> &parts = {});
};

} // namespace oz::services
