#pragma once

#include <unistd.h>
#include <utility>

namespace bmcsim
{

/// Owns an open file or socket and closes it when it goes.
class Descriptor
{
  public:
    explicit Descriptor(int value = -1) : m_Value(value) {}
    ~Descriptor() { Close(); }
    Descriptor(Descriptor&& other) noexcept : m_Value(std::exchange(other.m_Value, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept
    {
        std::swap(m_Value, other.m_Value);
        return *this;
    }

    int Get() const { return m_Value; }
    bool Valid() const { return m_Value >= 0; }
    /// @return false when the system cannot tell that all is written; errno has its reason.
    bool Close() { return m_Value < 0 || close(std::exchange(m_Value, -1)) == 0; }

  private:
    int m_Value;
};

} // namespace bmcsim
