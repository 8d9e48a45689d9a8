#pragma once

#include <boost/json/object.hpp>
#include <boost/json/value.hpp>
#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace bmcsim
{

constexpr std::size_t MaxJsonFile = std::size_t{64} * 1024 * 1024;

/// @param error  one line that names the file.
std::optional<std::string> ReadTextFile(const std::filesystem::path& path, std::string& error,
                                        std::size_t limit = MaxJsonFile);

/// Text from a file as an object.
/// @param name  what error calls the file; error also tells the line.
std::optional<boost::json::object> ParseObject(std::string_view text, const std::string& name, std::string& error);

/// Text from a client: any value, at most 32 deep; empty when it is no JSON.
std::optional<boost::json::value> ParseBody(std::string_view text);

/// The object or text behind a key; null where it is missing or of another kind.
const boost::json::object* FindObject(const boost::json::object& object, std::string_view key);
const boost::json::array* FindArray(const boost::json::object& object, std::string_view key);
std::string FindText(const boost::json::object& object, std::string_view key);

} // namespace bmcsim
