// Any bytes as the registry's file: they are refused, or what they say is written and read back alike.
#include "fuzz.h"

#include <windows.h>

#include <winreg.h>

#include "kernel32/failure.h"
#include "advapi32/registrytext.h"

#include <optional>
#include <string>

using fuzz::Check;

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    std::optional<winapi::Registry> registry;
    try {
        registry = winapi::RegistryFromText(text);
    } catch (const winapi::Failure& failure) {
        Check(failure.code == ERROR_BADDB, "what is no registry is told as such");
        return 0;
    }
    const std::string written = winapi::TextFromRegistry(*registry);
    Check(winapi::RegistryFromText(written) == *registry, "what is written is read back");
    Check(winapi::TextFromRegistry(winapi::RegistryFromText(written)) == written, "and written alike");
    return 0;
}
