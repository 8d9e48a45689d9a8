#include "BuiltInMachine.h"

// The assembler puts each file between two labels, as it is.
#define BMCSIM_EMBED(label, file)                                                                                      \
    asm(".section .rodata\n"                                                                                           \
        ".global bmcsim_" #label "_begin\n"                                                                            \
        ".global bmcsim_" #label "_end\n"                                                                              \
        ".hidden bmcsim_" #label "_begin\n"                                                                            \
        ".hidden bmcsim_" #label "_end\n"                                                                              \
        "bmcsim_" #label "_begin:\n"                                                                                   \
        ".incbin \"" BMCSIM_MACHINE_DIR "/" file "\"\n"                                                                \
        "bmcsim_" #label "_end:\n"                                                                                     \
        ".byte 0\n"                                                                                                    \
        ".previous\n");                                                                                                \
    extern "C" const char bmcsim_##label##_begin[];                                                                    \
    extern "C" const char bmcsim_##label##_end[]

BMCSIM_EMBED(bios, "bios.json");
BMCSIM_EMBED(registry, "registry.en.json");
BMCSIM_EMBED(registryfile, "registryfile.json");
BMCSIM_EMBED(protected, "protected.json");

namespace bmcsim
{
namespace
{

std::string_view Between(const char* begin, const char* end) { return {begin, static_cast<std::size_t>(end - begin)}; }

} // namespace

std::vector<std::pair<std::string_view, std::string_view>> BuiltInFiles()
{
    return {
        {"bios.json", Between(bmcsim_bios_begin, bmcsim_bios_end)},
        {"registry.en.json", Between(bmcsim_registry_begin, bmcsim_registry_end)},
        {"registryfile.json", Between(bmcsim_registryfile_begin, bmcsim_registryfile_end)},
        {"protected.json", Between(bmcsim_protected_begin, bmcsim_protected_end)},
    };
}

} // namespace bmcsim
