#include "publishing/WarnOnce.hpp"

#include "publishing/Log.hpp"

#include <utility>

namespace oz::services {

void WarnOnce::operator()(const QString &problem)
{
    if (std::exchange(m_problem, problem) != problem && !problem.isEmpty())
        qCWarning(logServices).noquote() << problem;
}

} // namespace oz::services
