#include "Secret.h"

#include <algorithm>
#include <cstring>
#include <optional>
#include <utility>

#include <boost/json/serializer.hpp>
#include <boost/json/string.hpp>

#include "ChangeDelivery.h"

namespace Tavrine::Tool
{
namespace
{

/// "\u001f" for one character.
constexpr std::size_t LongestEscape = 6;
/// Messages are full of shorter texts.
constexpr std::size_t ShortestBlotted = 4;
/// Stands where the library has cut a message.
constexpr std::string_view CutMark = "...";

bool IsControl(char one) { return static_cast<unsigned char>(one) < 0x20 || one == 0x7f; }

/// As the library's messages hold it: control characters are blanks, and none is left at the ends.
std::string InMessage(std::string_view text)
{
    std::string clean(text);
    std::ranges::replace_if(clean, IsControl, ' ');
    clean.erase(clean.find_last_not_of(' ') + 1);
    clean.erase(0, clean.find_first_not_of(' '));
    return clean;
}

std::string_view InsideQuotes(std::string_view json) { return json.substr(1, json.size() - 2); }

bool IsEscaped(char one) { return IsControl(one) || one == '"' || one == '\\'; }

/// Calls `use` with each form in which a text may repeat the secret. Most have but one.
template <typename Use> void ForEachForm(std::string_view secret, const Use& use)
{
    use(secret);
    Secret inMessage(InMessage(secret));
    if (inMessage.Text() != secret)
    {
        use(inMessage.Text());
    }
    if (std::ranges::any_of(secret, IsEscaped))
    {
        Secret escaped(QuotedJson(secret));
        use(InsideQuotes(escaped.Text()));
        Secret escapedTwice(QuotedJson(InsideQuotes(escaped.Text())));
        use(InsideQuotes(escapedTwice.Text()));
    }
}

/// Which bytes of a text belong to secrets. They are all found before one is taken out, so that
/// nothing is left of one that overlaps another.
class Cover
{
    static constexpr char Open = '-';
    static constexpr char Covered = '*';

  public:
    explicit Cover(std::string_view text) : m_Text(text), m_Covered(text.size(), Open) {}

    void Add(std::string_view form)
    {
        if (form.size() < ShortestBlotted)
        {
            return;
        }
        for (std::size_t at = m_Text.find(form); at != std::string_view::npos; at = m_Text.find(form, at + 1))
        {
            Mark(at, form.size());
        }
        for (std::size_t cut = m_Text.find(CutMark); cut != std::string_view::npos; cut = m_Text.find(CutMark, cut + 1))
        {
            AddCut(form, cut);
        }
    }

    std::string Shown() const
    {
        std::string shown;
        for (std::size_t at = 0; at < m_Text.size(); ++at)
        {
            if (m_Covered[at] == Open)
            {
                shown += m_Text[at];
            }
            else if (at == 0 || m_Covered[at - 1] == Open)
            {
                shown += Blot;
            }
        }
        return shown;
    }

  private:
    /// The start of a form, as much as stands before the cut.
    void AddCut(std::string_view form, std::size_t cut)
    {
        for (std::size_t length = std::min(cut, form.size()); length >= ShortestBlotted; --length)
        {
            if (m_Text.substr(cut - length, length) == form.substr(0, length))
            {
                Mark(cut - length, length);
                return;
            }
        }
    }

    void Mark(std::size_t at, std::size_t length) { m_Covered.replace(at, length, length, Covered); }

    std::string_view m_Text;
    /// By byte of the text.
    std::string m_Covered;
};

} // namespace

Secret::Secret(std::string&& text) : m_Text(std::move(text)) { Wipe(text); }

Secret::~Secret() { Wipe(m_Text); }

void Wipe(std::string& text)
{
    text.resize(text.capacity());
    explicit_bzero(text.data(), text.size());
    text.clear();
}

void Wipe(boost::json::string& text)
{
    explicit_bzero(text.data(), text.size());
    text.clear();
}

std::string QuotedJson(std::string_view text)
{
    std::string json(text.size() * LongestEscape + std::string_view("\"\"").size(), '\0');
    boost::json::serializer serializer;
    serializer.reset(boost::json::string_view(text.data(), text.size()));
    json.resize(serializer.read(json.data(), json.size()).size());
    return json;
}

bool IsShortSecret(std::string_view secret) { return secret.size() < ShortestBlotted; }

bool HoldsShortSecret(std::string_view text, const SecretTexts& secrets)
{
    bool holds = false;
    for (const std::string_view secret : secrets)
    {
        if (IsShortSecret(secret))
        {
            ForEachForm(secret, [&](std::string_view form)
                        { holds = holds || (!form.empty() && text.find(form) != std::string_view::npos); });
        }
    }
    return holds;
}

bool QuotesBmc(const Failure& failure)
{
    const std::string& message = failure.Message;
    return failure.Code != CodeConnection || message.find(DeliveryWords::NoLogin) != std::string::npos ||
           message.find(DeliveryWords::NoPrivilege) != std::string::npos;
}

std::string WithoutSecrets(const std::string& text, const SecretTexts& secrets)
{
    if (HoldsShortSecret(text, secrets))
    {
        const std::optional<Delivery> told = DeliveryIn(text);
        return "what the BMC answered is not shown, since a new password may stand in it" +
               (told ? "; " + std::string(WordsOf(*told)) : "");
    }
    Cover cover(text);
    for (const std::string_view secret : secrets)
    {
        ForEachForm(secret, [&](std::string_view form) { cover.Add(form); });
    }
    return cover.Shown();
}

Failure Hidden(Failure failure, const SecretTexts& secrets, const std::string& shownName)
{
    SecretTexts looked = secrets;
    if (!QuotesBmc(failure))
    {
        std::erase_if(looked, IsShortSecret);
    }
    const bool leftOut = HoldsShortSecret(failure.Message, looked);
    failure.Message = (leftOut && !shownName.empty() ? shownName + ": " : "") + WithoutSecrets(failure.Message, looked);
    failure.Cause = leftOut ? "" : WithoutSecrets(failure.Cause, looked);
    return failure;
}

} // namespace Tavrine::Tool
