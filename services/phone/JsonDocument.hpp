#pragma once

#include <QString>

#include <utility>
#include <vector>

namespace oz::services {

/*! A value of a JSON file. */
struct JsonValue
{
    enum Kind { Null, Truth, Number, Text, List, Map };

    Kind kind = Null;
    bool truth = false;
    double number = 0;
    QString text = {}; //!< of a Number, as it is written
    int line = 1; //!< where it begins
    std::vector<std::pair<QString, JsonValue>> members =
        {}; //!< in the order of the file; of a List, without names
};

/*! A JSON file, which may have comments of both forms. */
struct JsonDocument
{
    QString file;
    QByteArray text;
    JsonValue root{JsonValue::Map};

    /*! Reads \a text, calling it \a file in errors; throws Error, which names file and line. */
    [[nodiscard]] static JsonDocument parse(const QByteArray &text, const QString &file);
};

} // namespace oz::services
