#pragma once

#include <functional>
#include <string>
#include <string_view>

#include <boost/json/value.hpp>

#include "RedfishConfigResult.h"

namespace Tavrine
{

/// Reads one resource of the BMC as JSON text; BMCBaseAssistant::GetData in life.
using ResourceReader = std::function<RedfishConfigResult(const std::string& path, std::string& text)>;

/// The identifier that a value resource holds in "AttributeRegistry"; empty for none.
std::string RegistryIdentifier(std::string_view valueResource);

/// The "Uri" of the entry of "Location" that suits a language best: the language
/// itself, then one that differs in region alone, then English, then the first. Empty
/// when no entry has a "Uri".
std::string ChooseLocation(const boost::json::value& registryFile, std::string_view language);

/// Finds where the text of the registry `identifier` lies: among the members of
/// /redfish/v1/Registries (DSP8010, MessageRegistryFileCollection; all pages) the one
/// whose last path segment is the identifier, or else the one whose registry file has
/// it as "Id" or "Registry"; then by ChooseLocation. Identifiers are equal when they
/// are equal byte for byte: other versions are other registries.
/// @return 0, or a failure of `read`, or 26 with a message that names the registry.
RedfishConfigResult FindRegistry(const ResourceReader& read, const std::string& identifier, const std::string& language,
                                 std::string& url);

/// The same for a message registry. `identifier` is the front of a message id, a name
/// and a version ("Base.1.8", "Acme.2.15.0", "Base.v1_0_0"). A registry of that name with
/// the same major and minor version is the one; failing that, one with the same major
/// version serves, since minor versions only add (DSP0266, "Registries").
RedfishConfigResult FindMessageRegistry(const ResourceReader& read, const std::string& identifier,
                                        const std::string& language, std::string& url);

} // namespace Tavrine
