#pragma once

#include <coroutine>
#include <exception>
#include <utility>

namespace oz::services {

/*!
 * A coroutine that begins at once and gives nothing. Whoever awaits it goes on when it is done, and gets what
 * it throws. It ends with this object, wherever it stands.
 */
class [[nodiscard]] Task
{
public:
    struct promise_type
    {
        Task get_return_object() { return Task(Handle::from_promise(*this)); }
        std::suspend_never initial_suspend() noexcept { return {}; }
        auto final_suspend() noexcept
        {
            struct Next
            {
                bool await_ready() noexcept { return false; }
                std::coroutine_handle<> await_suspend(Handle done) noexcept
                {
                    const auto awaiting = done.promise().awaiting;
                    return awaiting ? awaiting : std::noop_coroutine();
                }
                void await_resume() noexcept { }
            };
            return Next();
        }
        void return_void() { }
        void unhandled_exception() { error = std::current_exception(); }

        std::coroutine_handle<> awaiting;
        std::exception_ptr error;
    };

    Task() = default;
    Task(Task &&other) noexcept : m_handle(std::exchange(other.m_handle, {})) { }
    Task &operator=(Task &&other) noexcept
    {
        std::swap(m_handle, other.m_handle);
        return *this;
    }
    ~Task()
    {
        if (m_handle)
            m_handle.destroy();
    }

    [[nodiscard]] bool await_ready() const { return m_handle.done(); }
    void await_suspend(std::coroutine_handle<> awaiting) { m_handle.promise().awaiting = awaiting; }
    void await_resume() const
    {
        if (m_handle.promise().error)
            std::rethrow_exception(m_handle.promise().error);
    }

private:
    using Handle = std::coroutine_handle<promise_type>;

    explicit Task(Handle handle) : m_handle(handle) { }

    Handle m_handle;
};

} // namespace oz::services
