#pragma once

#include <QString>

namespace oz::services {

/*! Logs a problem once, until it is over or there is another one. */
class WarnOnce
{
public:
    /*! The problem that there is now; empty where there is none. */
    void operator()(const QString &problem);

private:
    QString m_problem;
};

} // namespace oz::services
