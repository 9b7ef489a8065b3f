#pragma once

#include <QString>

#include <stdexcept>

namespace oz::services {

/*!
 * An error that keeps the services from starting, or the simulated phone from obeying, in words for the
 * person who asks for it: what, where and why.
 */
class Error : public std::runtime_error
{
public:
    explicit Error(const QString &text) : std::runtime_error(text.toStdString()) { }
    [[nodiscard]] QString text() const { return QString::fromUtf8(what()); }
};

} // namespace oz::services
