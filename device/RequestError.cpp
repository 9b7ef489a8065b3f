#include <oz/device/RequestError.hpp>

#include <utility>

namespace oz::device {

namespace {

thread_local RequestError *t_innermost = nullptr;

} // namespace

RequestError::RequestError() : m_outer(std::exchange(t_innermost, this)) { }

RequestError::~RequestError()
{
    t_innermost = m_outer;
}

void RequestError::note(int number, const QString &text)
{
    if (!t_innermost)
        return;
    t_innermost->m_number = number;
    t_innermost->m_text = text;
}

} // namespace oz::device
