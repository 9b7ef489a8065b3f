#pragma once

#include "table/AskedRequest.hpp"
#include "table/Fields.hpp"

#include <QString>
#include <QStringList>
#include <QVariant>
#include <QVariantMap>

#include <vector>

namespace oz::services {

class Tree;

/*! A field of a facility that conditions see, under its whole name; a star in it stands for an instance. */
struct PublicValue
{
    QString name; //!< "battery.level", "display.*.attached"
    const Field *field = nullptr;
};

/*! A value by its name: which one, and of which instance. */
struct PublicValueUse
{
    const Field *field = nullptr;
    QString instance;

    /*! The present value; invalid where it is not known. */
    [[nodiscard]] QVariant now(const Tree &tree) const;
};

/*! Every value that conditions know. */
[[nodiscard]] const std::vector<PublicValue> &publicValues();
/*! The value called \a name; throws Error with the nearest ones where there is none. */
[[nodiscard]] PublicValueUse publicValueNamed(const QString &name);

/*! Every request that applications make, under its whole name: "led.flash". */
[[nodiscard]] const std::vector<AskedRequest> &publicRequests();
/*! The request called \a name; throws Error where there is none. */
[[nodiscard]] const AskedRequest &publicRequestNamed(const QString &name);
/*! "led.flash color=red count=2" for a \a message to the object at \a path; empty where it is no request. */
[[nodiscard]] QString publicRequestText(const QString &path, const QVariantMap &message);

/*! Both lists for tools: maps with "name", "type" or "fields", "help", and where there are any "words"; the
 * values with what they are "now". */
[[nodiscard]] QVariantMap describePublic(const Tree &tree);

} // namespace oz::services
