#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace fuzztest
{

struct PlainMember;

/// A value of a JSON document (RFC 8259), read by a plain reader that shares nothing
/// with the one under test: the second opinion of the oracles.
struct PlainJson
{
    enum class Kind
    {
        Null,
        Boolean,
        /// Fits 64 bits signed.
        Integer,
        /// Any other number.
        Number,
        String,
        Array,
        Object,
    };

    Kind Is = Kind::Null;
    bool Flag = false;
    std::int64_t Whole = 0;
    /// Of a string the text, of a number as it is written.
    std::string Text;
    std::vector<PlainJson> Elements;
    /// In the order of the document, names that occur twice included.
    std::vector<PlainMember> Members;

    /// The last member of that name; null for none, and for what is no object.
    const PlainJson* Find(std::string_view name) const;
    /// The text of a string member; empty for none.
    std::string TextOf(std::string_view name) const;
    const std::vector<PlainJson>* ArrayOf(std::string_view name) const;
};

struct PlainMember
{
    std::string Name;
    PlainJson Value;
};

/// The deepest nesting that is taken, that of the readers under test.
inline constexpr unsigned int PlainJsonDepth = 32;

/// The document, or nothing for what is none or is nested too deeply.
/// @param doubtful  set when readers may differ: a number has an exponent of 100 or more, or
///                  no double holds it.
std::optional<PlainJson> ReadPlainJson(std::string_view text, bool& doubtful);

/// The same text of the same value: what a writer has to write, strings escaped as
/// little as need be.
std::string WritePlainJson(const PlainJson& value);

/// A JSON string.
std::string QuotedJson(std::string_view text);

} // namespace fuzztest
