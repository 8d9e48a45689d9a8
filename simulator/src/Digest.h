#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace bmcsim
{

/// 64 small hexadecimal digits.
std::string Sha256Hex(std::string_view data);
/// @param bytes  twice as many hexadecimal digits come back; empty when the system
/// has no randomness to give.
std::string RandomHex(std::size_t bytes);
/// Empty where the text is no base64.
std::optional<std::string> DecodeBase64(const std::string& text);
/// Takes the same time wherever two texts of one length differ.
bool SameSecret(std::string_view a, std::string_view b);

} // namespace bmcsim
