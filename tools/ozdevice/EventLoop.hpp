#pragma once

#include "facilities/CommandError.hpp"

#include <QCoreApplication>

#include <optional>

namespace oz::tools {

/*! The event loop of a verb, whose handlers may throw CommandError, which is not for Qt to pass on. */
class EventLoop
{
public:
    /*! Calls \a body; what it throws ends the loop, and is thrown by run(). */
    template <typename Body>
    void guard(const Body &body)
    {
        if (m_problem)
            return;
        try {
            body();
        } catch (const CommandError &error) {
            m_problem = error;
            QCoreApplication::quit();
        }
    }

    /*! Throws what came up in a handler, where something has. */
    void check() const
    {
        if (m_problem)
            throw CommandError(*m_problem);
    }

    /*! Runs until something quits it; what it was quit with. */
    int run() const
    {
        check();
        const int status = QCoreApplication::exec();
        check();
        return status;
    }

private:
    std::optional<CommandError> m_problem;
};

} // namespace oz::tools
