#include "PlainText.h"

#include <algorithm>
#include <cstring>

#include "TextBytes.h"

namespace Tavrine
{

namespace
{

bool IsControl(unsigned char c) { return c < 0x20 || c == 0x7f; }

} // namespace

std::string CleanText(std::string_view text, std::size_t limit)
{
    const bool cut = text.size() > limit;
    std::string clean(text.substr(0, CutPosition(text, limit)));
    for (char& c : clean)
    {
        c = IsControl(static_cast<unsigned char>(c)) ? ' ' : c;
    }
    clean.erase(clean.find_last_not_of(' ') + 1);
    clean.erase(0, std::min(clean.find_first_not_of(' '), clean.size()));
    return cut ? clean + "..." : clean;
}

std::string LowerAscii(std::string_view text)
{
    std::string lower(text);
    std::transform(lower.begin(), lower.end(), lower.begin(), [](char letter) { return LowerAscii(letter); });
    return lower;
}

void AppendJsonString(std::string& target, std::string_view text)
{
    static constexpr char digits[] = "0123456789abcdef";
    target += '"';
    for (const char c : text)
    {
        const auto byte = static_cast<unsigned char>(c);
        if (c == '"' || c == '\\')
        {
            target += '\\';
            target += c;
        }
        else if (byte < 0x20)
        {
            target += "\\u00";
            target += digits[byte >> 4U];
            target += digits[byte & 15U];
        }
        else
        {
            target += c;
        }
    }
    target += '"';
}

void Wipe(std::string& secret)
{
    secret.resize(secret.capacity());
    explicit_bzero(secret.data(), secret.size());
    secret.clear();
}

void SecretText::Set(std::string_view text)
{
    Wipe(m_Text);
    // The old buffer must not be copied nor left behind full when it grows: it is
    // empty by now.
    m_Text.assign(text);
}

} // namespace Tavrine
