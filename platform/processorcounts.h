#pragma once

#include <cstdint>

// How many processors a machine has.
struct ProcessorCount {
    std::uint32_t cores;              // physical ones
    std::uint32_t logicalProcessors;  // what runs a thread

    friend bool operator==(const ProcessorCount&, const ProcessorCount&) = default;
};

// The processors of the machine; 0 and 0 where the system doesn't tell.
//
// With `allowOverride` a setting takes the place of both counts: the first that isn't 0 of the REG_DWORD
// values "NumCores" and "NumCpus" in Software\Quillmar (32-bit view) below HKEY_CURRENT_USER, and then the
// same two below HKEY_LOCAL_MACHINE. One that can't be read counts as 0. Raises nothing but what the memory
// layer raises.
[[nodiscard]] ProcessorCount ProcessorCounts(bool allowOverride);
