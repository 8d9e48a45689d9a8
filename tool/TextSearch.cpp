#include "TextSearch.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

#define PCRE2_CODE_UNIT_WIDTH 8
#include <pcre2.h>

#include "JsonOutput.h"
#include "Signals.h"

namespace Tavrine::Tool
{
namespace
{

/// Of one text, over all places where a search starts: PCRE2's own limit counts anew at each place. Far above what an
/// honest search takes, and done in well under a second.
constexpr std::uint32_t MostSteps = 1'000'000;
constexpr std::uint32_t MostHeapKilobytes = 16 * 1024;

struct FreePcre
{
    void operator()(pcre2_code* code) const { pcre2_code_free(code); }
    void operator()(pcre2_match_data* data) const { pcre2_match_data_free(data); }
    void operator()(pcre2_match_context* context) const { pcre2_match_context_free(context); }
};

template <typename Kind> using Owned = std::unique_ptr<Kind, FreePcre>;

const unsigned char* Bytes(const std::string& text)
{
    return reinterpret_cast<const unsigned char*>(text.data()); // NOLINT(*-reinterpret-cast): PCRE2's own type of text
}

int EndWhereItTakesTooLong(pcre2_callout_block*, void* steps)
{
    auto& count = *static_cast<std::uint32_t*>(steps);
    return ++count > MostSteps || StopSignal() != 0 ? PCRE2_ERROR_CALLOUT : 0;
}

} // namespace

struct TextSearch::Compiled
{
    Owned<pcre2_code> Code;
    Owned<pcre2_match_data> Data;
    Owned<pcre2_match_context> Limits;
};

TextSearch::TextSearch(const std::string& word, bool regex) : m_Compiled(std::make_unique<Compiled>())
{
    const std::uint32_t options = PCRE2_UTF | PCRE2_CASELESS | (regex ? PCRE2_UCP | PCRE2_AUTO_CALLOUT : PCRE2_LITERAL);
    int cause = 0;
    std::size_t place = 0;
    m_Compiled->Code.reset(pcre2_compile(Bytes(word), word.size(), options, &cause, &place, nullptr));
    if (m_Compiled->Code == nullptr)
    {
        std::array<unsigned char, 256> text{};
        pcre2_get_error_message(cause, text.data(), text.size());
        m_Error = std::string(text.begin(), std::find(text.begin(), text.end(), '\0'));
        m_Error += " at " + std::to_string(place);
        return;
    }
    m_Compiled->Data.reset(pcre2_match_data_create(1, nullptr));
    m_Compiled->Limits.reset(pcre2_match_context_create(nullptr));
    pcre2_set_heap_limit(m_Compiled->Limits.get(), MostHeapKilobytes);
}

TextSearch::TextSearch(TextSearch&&) noexcept = default;
TextSearch& TextSearch::operator=(TextSearch&&) noexcept = default;
TextSearch::~TextSearch() = default;

Occurrence TextSearch::LookIn(const std::string& text) const
{
    if (m_Compiled->Code == nullptr)
    {
        return Occurrence::None;
    }
    const std::string subject = ValidUtf8(text);
    std::uint32_t steps = 0;
    pcre2_set_callout(m_Compiled->Limits.get(), EndWhereItTakesTooLong, &steps);
    const int found = pcre2_match(m_Compiled->Code.get(), Bytes(subject), subject.size(), 0, PCRE2_NO_UTF_CHECK,
                                  m_Compiled->Data.get(), m_Compiled->Limits.get());
    if (found >= 0)
    {
        return Occurrence::Found;
    }
    return found == PCRE2_ERROR_NOMATCH ? Occurrence::None : Occurrence::GivenUp;
}

} // namespace Tavrine::Tool
