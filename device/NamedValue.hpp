#pragma once

#include <QString>

#include <cstddef>
#include <optional>

namespace oz::device {

/*! A text that a service publishes, and what it stands for. */
template <typename Value>
struct NamedValue
{
    const char *name;
    Value value;
};

/*! The value that \a name stands for, compared exactly; none if the table does not have it. */
template <typename Value, std::size_t Size>
[[nodiscard]] std::optional<Value> valueNamed(const NamedValue<Value> (&table)[Size], const QString &name)
{
    for (const NamedValue<Value> &entry : table) {
        if (name == QLatin1String(entry.name))
            return entry.value;
    }
    return std::nullopt;
}

} // namespace oz::device
