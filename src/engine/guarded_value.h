// A value that one thread writes and others read whole, under a small lock of its own.
#pragma once

#include <mutex>
#include <utility>

namespace engine {

// Every read returns a copy and every write replaces the value, so no reader ever sees a half
// written value. For fields like strings that cannot be atomic.
template <typename T> class Guarded
{
public:
    Guarded() = default;
    explicit Guarded(T value)
        : m_value(std::move(value))
    {
    }
    Guarded(const Guarded &) = delete;
    Guarded &operator=(const Guarded &) = delete;

    Guarded &operator=(T value)
    {
        set(std::move(value));
        return *this;
    }

    T get() const
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        return m_value;
    }

    void set(T value)
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_value = std::move(value);
    }

private:
    mutable std::mutex m_mutex; // guards m_value
    T m_value{};
};

} // namespace engine
