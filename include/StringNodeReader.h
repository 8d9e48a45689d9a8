#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Tavrine
{

/// Takes the events of a boost::json::basic_parser and keeps the text at the end of a path of object keys, for
/// a resource with thousands of values of which one is wanted: no document is made. Of several members of one
/// name the last one counts. The path's texts outlive this.
class StringNodeReader
{
  public:
    // Nothing but one text is kept.
    static constexpr std::size_t max_object_size = std::numeric_limits<std::size_t>::max();
    static constexpr std::size_t max_array_size = max_object_size;
    static constexpr std::size_t max_key_size = max_object_size;
    static constexpr std::size_t max_string_size = max_object_size;

    explicit StringNodeReader(std::initializer_list<std::string_view> path) : m_Path(path) {}

    const std::optional<std::string>& Found() const { return m_Found; }

    // The names and results are those that boost::json::basic_parser asks for; Error is its error_code,
    // which is left alone.
    template <class Error> bool on_document_begin(Error&) { return true; }
    template <class Error> bool on_document_end(Error&) { return true; }
    template <class Error> bool on_object_begin(Error&)
    {
        const bool root = m_Depth == 0;
        if (root || (BeginValue() && m_Depth < m_Path.size()))
        {
            m_Followed = m_Depth + 1;
            m_AtKey = false;
        }
        ++m_Depth;
        return true;
    }
    template <class Error> bool on_object_end(std::size_t, Error&) { return End(); }
    template <class Error> bool on_array_begin(Error&)
    {
        BeginValue();
        ++m_Depth;
        return true;
    }
    template <class Error> bool on_array_end(std::size_t, Error&) { return End(); }
    template <class Error> bool on_key_part(std::string_view part, std::size_t, Error&)
    {
        m_Text.append(part.data(), part.size());
        return true;
    }
    template <class Error> bool on_key(std::string_view part, std::size_t, Error&)
    {
        if (m_Depth == m_Followed)
        {
            m_AtKey = m_Text.append(part.data(), part.size()) == m_Path[m_Depth - 1];
        }
        m_Text.clear();
        return true;
    }
    template <class Error> bool on_string_part(std::string_view part, std::size_t, Error&)
    {
        if (AtEnd())
        {
            m_Text.append(part.data(), part.size());
        }
        return true;
    }
    template <class Error> bool on_string(std::string_view part, std::size_t, Error&)
    {
        const bool wanted = AtEnd();
        BeginValue();
        if (wanted)
        {
            m_Found = m_Text.append(part.data(), part.size());
            m_Text.clear();
        }
        return true;
    }
    template <class Error> bool on_int64(std::int64_t, std::string_view, Error&) { return Scalar(); }
    template <class Error> bool on_uint64(std::uint64_t, std::string_view, Error&) { return Scalar(); }
    template <class Error> bool on_double(double, std::string_view, Error&) { return Scalar(); }
    template <class Error> bool on_bool(bool, Error&) { return Scalar(); }
    template <class Error> bool on_null(Error&) { return Scalar(); }
    // GCOV_EXCL_START
    // Asked for, and called for numbers that come in parts and for comments alone; neither comes.
    template <class Error> bool on_number_part(std::string_view, Error&) { return true; }
    template <class Error> bool on_comment_part(std::string_view, Error&) { return true; }
    template <class Error> bool on_comment(std::string_view, Error&) { return true; }
    // GCOV_EXCL_STOP

  private:
    /// The value that comes is that of the path's next key.
    bool AtNext() const { return m_Depth != 0 && m_Depth == m_Followed && m_AtKey; }
    bool AtEnd() const { return AtNext() && m_Depth == m_Path.size(); }

    /// @return AtNext.
    bool BeginValue()
    {
        if (!AtNext())
        {
            return false;
        }
        m_Found.reset();
        return true;
    }
    bool Scalar()
    {
        BeginValue();
        return true;
    }
    bool End()
    {
        --m_Depth;
        m_Followed = std::min(m_Followed, m_Depth);
        m_AtKey = false;
        return true;
    }

    std::vector<std::string_view> m_Path;
    std::optional<std::string> m_Found;
    /// A key or the text wanted, while it comes in parts.
    std::string m_Text;
    std::size_t m_Depth = 0;
    /// So many objects that are open now lie on the path, from the root on.
    std::size_t m_Followed = 0;
    bool m_AtKey = false;
};

} // namespace Tavrine
