#pragma once

#include <string>
#include <vector>

#include "Children.h"

namespace bench
{

/// One kind of work on one machine: medians of the tool's runs and of curl's.
struct Row
{
    std::string Work;
    unsigned int Attributes = 0;
    bool Tls = false;
    unsigned int LatencyMs = 0;
    /// Its registry has 3 MB.
    bool Wordy = false;
    Cost Tool;
    Cost Floor;
    std::size_t Requests = 0;
    std::size_t Connections = 0;
    /// Bytes of bodies that the BMC sent.
    std::size_t Bytes = 0;
    /// Bytes of these that were a registry's.
    std::size_t RegistryBytes = 0;
};

Cost MedianOf(std::vector<Cost> costs);

std::string HeadOfTable();
std::string LineOf(const Row& row);

/// What is wanted of the tool, a line each: met, or missed and by which row.
/// @param version  cost of `tavrine --version`.
std::string Targets(const std::vector<Row>& rows, const Cost& version);

std::string JsonOf(const std::vector<Row>& rows, const Cost& version);

} // namespace bench
