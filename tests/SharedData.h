#pragma once

#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace testdata
{

/// Folder of real machines' answers; it need not exist.
inline std::filesystem::path SharedData() { return TAVRINE_SHARED_DATA; }

/// The machines in it, as folders with a bios.json; empty where there is no data.
inline std::vector<std::filesystem::path> Machines()
{
    std::vector<std::filesystem::path> machines;
    for (const char* name : {"hpe-DL360", "hpe-DL325_Gen10Plus_FC", "dmtf-example", "openstack-sushy", "ami-zt"})
    {
        if (std::filesystem::exists(SharedData() / name / "bios.json"))
        {
            machines.push_back(SharedData() / name);
        }
    }
    return machines;
}

/// Throws where there is no such file, so that none is taken for an empty one.
inline std::string ReadFile(const std::filesystem::path& path)
{
    std::ifstream file(path, std::ios::binary);
    if (!file)
    {
        throw std::runtime_error("cannot be opened: " + path.string());
    }
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

} // namespace testdata
