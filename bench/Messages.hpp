#pragma once

#include <QString>
#include <QVariantMap>

#include <string>
#include <vector>

namespace oz::bench {

/*! The object by which a facility tells of a change, as its service publishes it. */
struct Message
{
    std::string facility;
    QString path;
    QVariantMap attributes;
    QVariantMap changed; //!< the same after the change
};

/*! One for each facility. */
[[nodiscard]] const std::vector<Message> &messages();

/*! Publishes every object that the facilities' classes need to live. */
void publishAll();

} // namespace oz::bench
