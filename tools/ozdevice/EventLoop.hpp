#pragma once

#include "facilities/CommandError.hpp"

#include <QCoreApplication>

#include <optional>

namespace oz::tools {

/*! The event loop of a verb. Its handlers may throw CommandError, which must not pass through Qt. */
class EventLoop
{
public:
    /*! Calls \a body. A CommandError ends the loop, and run() throws it. */
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

    /*! Throws the error of a handler, if there is one. */
    void check() const
    {
        if (m_problem)
            throw CommandError(*m_problem);
    }

    /*! Runs the loop, and returns the status that it was quit with. */
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
