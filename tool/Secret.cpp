#include "Secret.h"

#include <cstring>

namespace Tavrine::Tool
{

Secret::~Secret() { Wipe(m_Text); }

void Wipe(std::string& text)
{
    text.resize(text.capacity());
    explicit_bzero(text.data(), text.size());
    text.clear();
}

} // namespace Tavrine::Tool
