#pragma once

#include <QString>

#include <stdexcept>

namespace oz::services {

/*! What keeps the services from starting, in words for the person who starts them: what, where and why. */
class Error : public std::runtime_error
{
public:
    explicit Error(const QString &text) : std::runtime_error(text.toStdString()) { }
};

} // namespace oz::services
