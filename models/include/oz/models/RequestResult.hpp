#pragma once

#include <QMetaType>
#include <QString>

namespace oz::models {

/*! What became of a request. */
struct RequestResult
{
    bool succeeded = false; //!< whether the request was done, as far as it tells
    int code = 0; //!< an enumerator of the request's class; 0 where that has none
    QString reason; //!< why it failed: the enumerator's name; empty where it succeeded
    QString value = {}; //!< what was asked for, where the request says that there is anything

    /*! Whether all of that is the same. */
    bool operator==(const RequestResult &) const = default;
};

} // namespace oz::models
