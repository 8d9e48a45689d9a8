#pragma once

#include "Answer.h"
#include "RedfishConfigProc.h"
#include "SettingManager.h"

namespace Tavrine::Tool
{

class Bmc;
struct Options;

/// `values [NAME …]`.
Answer RunValues(const Options& options, Bmc& bmc);
/// `defaults [NAME …]`.
Answer RunDefaults(const Options& options, Bmc& bmc);

/// The values that settings take, in the library's one-line form. That some of all
/// settings, or of those that a pattern matches, have none is a note; of one that is
/// named it is a failure.
/// @param readManager  tells why several named settings have none, where it can; `front` is asked where it cannot.
Answer ListValues(RedfishConfigProc& front, const Options& options, const ManagerReader& readManager);

/// The defaults of settings, in the same way.
Answer ListDefaults(RedfishConfigProc& front, const Options& options, const ManagerReader& readManager);

} // namespace Tavrine::Tool
