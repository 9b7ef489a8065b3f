#pragma once

#include <QString>

#include <system_error>

namespace oz {

/*! The outcome that an object tells as error() and errorString(). */
class LastError
{
public:
    /*! Notes \a error, an errno or 0, with a \a detail where more is known than its text; whether it is 0. */
    bool done(int error, const QString &detail = {})
    {
        m_error = error;
        m_detail = detail;
        return error == 0;
    }
    [[nodiscard]] int code() const { return m_error; }
    /*! Empty for 0. */
    [[nodiscard]] QString text() const
    {
        if (m_error == 0 || !m_detail.isEmpty())
            return m_detail;
        return QString::fromStdString(std::generic_category().message(m_error));
    }

private:
    int m_error = 0;
    QString m_detail;
};

} // namespace oz
