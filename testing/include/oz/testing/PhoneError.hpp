#pragma once

#include <oz/testing/OzTestingGlobal.hpp>

#include <QString>

#include <stdexcept>

namespace oz::testing {

/*!
 * The error that every failing call of the kit throws, also when a wait reaches its limit. what() names the
 * call, the phone, and the reason.
 */
class OZ_TESTING_EXPORT PhoneError : public std::runtime_error
{
public:
    /*! With the text of what(). */
    explicit PhoneError(const QString &text);
    ~PhoneError() override;
    /*! what() as text. */
    [[nodiscard]] QString text() const { return QString::fromUtf8(what()); }
};

} // namespace oz::testing
