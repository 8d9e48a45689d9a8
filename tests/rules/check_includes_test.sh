#!/usr/bin/env bash
# check_includes_test.sh CHECKER: proves on a small tree of its own that the checker lets
# sound includes pass and names the file of every planted violation.
set -euo pipefail

checker=$1
tree=$(mktemp -d)
trap 'rm -rf "$tree"' EXIT
failures=0

put() { mkdir -p "$tree/$(dirname "$1")" && printf '%s\n' "$2" >"$tree/$1"; }

sound_tree()
{
    put include/Log.h '#include <sstream>'
    put include/Config.h '#include "Log.h"'
    put include/Json.h '#include <boost/json/fwd.hpp>'
    local name
    for name in logger globalconfig ConfigCompatibleModule RestCfgErrCode RedfishConfigCommon RedfishConfigAssistant; do
        put "RedfishConfig/$name/$name.cpp" '#include "Log.h"'
        put "RedfishConfig/$name/${name}Inside.h" '#include <spdlog/spdlog.h>'
    done
    put RedfishConfig/logger/Log.cpp '  #  include "loggerInside.h" // "not/checked.h"'
    put RedfishConfig/BIOSResourceProc/Proc.h '#include <boost/json/value.hpp>'
    put RedfishConfig/BIOSResourceProc/Proc.cpp '#include "Proc.h"'
    put simulator/include/BmcSimulator.h '#include <string>'
    put simulator/Server.h '#include <httplib.h>'
    put simulator/Server.cpp '#include "BmcSimulator.h"'
    put tool/commands/Show.h '#include "Config.h"'
    put tool/main.cpp '#include "commands/Show.h"'
    put tool/Bmc.cpp '#include "BmcSimulator.h"'
}

# Each row: the file that receives the line, and the line.
violations=(
    'include/Log.h|#include <spdlog/spdlog.h>'
    'include/Log.h|#include <boost/json.hpp>'
    'include/Log.h|#include <unistd.h>'
    'include/Log.h|#include "loggerInside.h"'
    'include/Log.h|#include "Missing.h"'
    'RedfishConfig/BIOSResourceProc/Proc.cpp|#include "loggerInside.h"'
    'RedfishConfig/BIOSResourceProc/Proc.cpp|#include "../logger/loggerInside.h"'
    'RedfishConfig/BIOSResourceProc/Proc.cpp|#include <curl/curl.h>'
    'RedfishConfig/BIOSResourceProc/Proc.cpp|#include <BmcSimulator.h>'
    'RedfishConfig/logger/Log.cpp|#include "Proc.h"'
    'RedfishConfig/logger/Log.cpp|#include <Proc.h>'
    'RedfishConfig/logger/Log.cpp|#include "globalconfigInside.h"'
    'RedfishConfig/logger/Log.cpp|#include "../globalconfig/globalconfigInside.h"'
    'RedfishConfig/logger/Log.cpp|#include "BmcSimulator.h"'
    'RedfishConfig/logger/Log.cpp|#define HEADER "Proc.h"|#include HEADER'
    'simulator/Server.cpp|#include "Log.h"'
    'simulator/Server.cpp|#include <Log.h>'
    'simulator/Server.cpp|  #  include  "Proc.h"'
    'tool/main.cpp|#include "Server.h"'
    'tool/main.cpp|#include "loggerInside.h"'
    'tool/commands/Show.h|#include <Proc.h>'
)

expect_red()
{
    local what=$1 named=$2 output
    if output=$("$checker" "$tree"); then
        printf 'NOT SEEN: %s\n' "$what"
        failures=$((failures + 1))
    elif ! grep -qF "$named" <<<"$output"; then
        printf 'NOT NAMED: %s: %s\n' "$what" "$output"
        failures=$((failures + 1))
    fi
}

sound_tree
"$checker" "$tree" || { echo 'a sound tree is refused'; exit 1; }
for row in "${violations[@]}"; do
    file=${row%%|*}
    cp "$tree/$file" "$tree/kept"
    tr '|' '\n' <<<"${row#*|}" >>"$tree/$file"
    expect_red "$row" "$file:"
    mv "$tree/kept" "$tree/$file"
done
for folder in include tool RedfishConfig/logger; do
    mv "$tree/$folder" "$tree/moved"
    mkdir "$tree/$folder"
    expect_red "$folder without a source" "$folder:"
    rmdir "$tree/$folder"
    mv "$tree/moved" "$tree/$folder"
done
rm -r "$tree/RedfishConfig/logger"
expect_red 'a library that is gone' 'RedfishConfig:'
printf '%s violations planted, %s went by\n' "$((${#violations[@]} + 4))" "$failures"
[ "$failures" -eq 0 ]
