#pragma once

#include <oz/testing/OzTestingGlobal.hpp>

#include <QString>

#include <stdexcept>

namespace oz::testing {

/*!
 * Why a test's phone could not do what it was told, or did not become what a test waited for. Every call of
 * the kit that fails throws it: what() names what was asked, of which phone, and why it failed.
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
