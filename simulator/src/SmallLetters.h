#pragma once

#include <algorithm>
#include <string>

namespace bmcsim
{

/// Of ASCII alone: what HTTP and Redfish compare without regard to case holds no others.
inline char SmallLetter(char letter)
{
    return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
}

inline std::string SmallLetters(std::string text)
{
    std::transform(text.begin(), text.end(), text.begin(), SmallLetter);
    return text;
}

} // namespace bmcsim
