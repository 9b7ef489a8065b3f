#pragma once

#include <QString>

#include <stdexcept>
#include <sys/types.h>

namespace oz::services {

/*!
 * What keeps the services from starting, or the simulated phone from doing what it is told, in words for the
 * person who asks for it: what, where and why.
 */
class Error : public std::runtime_error
{
public:
    explicit Error(const QString &text) : std::runtime_error(text.toStdString()) { }
};

/*! The source of a facility has nothing to give, so that the simulated phone feeds it instead. */
class SourceUnavailable : public Error
{
public:
    using Error::Error;
};

/*!
 * The time while the daemon starts, for the life of the instance. What is wrong then keeps it from starting;
 * later it is logged, and everything else goes on.
 */
class Startup
{
public:
    Startup() { s_underWay = true; }
    ~Startup() { s_underWay = false; }
    Startup(const Startup &) = delete;
    Startup &operator=(const Startup &) = delete;

    /*! Throws Error while the daemon starts, and warns afterwards. */
    static void fail(const QString &problem);

    /*! Puts what \a server serves in its place, with the file mode \a mode; see fail() for where that fails.
     */
    template <typename Server>
    static void serve(Server &server, mode_t mode)
    {
        if (!server.listen(mode)) {
            fail(QLatin1String("cannot serve ") + server.path() + QLatin1String(": ") + server.errorString());
        }
    }

private:
    static inline bool s_underWay = false;
};

} // namespace oz::services
