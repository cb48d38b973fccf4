#include "windows_runtime.h"

#include <stdexcept>

namespace {

// Of Microsoft's corecrt_stdio_config.h.
constexpr unsigned long long standardSnprintf = 2;
constexpr unsigned long long legacyWideSpecifiers = 4;

template <typename Function>
Function FromRuntime(const char* name) {
    const HMODULE runtime = LoadLibraryW(L"ucrtbase.dll");
    const FARPROC found = runtime == nullptr ? nullptr : GetProcAddress(runtime, name);
    if (found == nullptr) throw std::runtime_error(std::string("ucrtbase.dll has no ") + name);
    return reinterpret_cast<Function>(reinterpret_cast<void*>(found));
}

template <typename Unit, typename Function>
std::basic_string<Unit> FormattedBy(Function function, const Unit* format, va_list arguments) {
    Unit text[4096];
    const int length =
        function(standardSnprintf | legacyWideSpecifiers, text, 4096, format, nullptr, arguments);
    if (length < 0) throw std::runtime_error("the runtime refuses the format");
    return {text, static_cast<std::size_t>(length)};
}

}  // namespace

std::string UniversalFormattedV(const char* format, va_list arguments) {
    using Function = int(__cdecl*)(unsigned long long, char*, std::size_t, const char*, void*, va_list);
    static const auto function = FromRuntime<Function>("__stdio_common_vsprintf");
    return FormattedBy(function, format, arguments);
}

std::wstring UniversalFormattedV(const wchar_t* format, va_list arguments) {
    using Function = int(__cdecl*)(unsigned long long, wchar_t*, std::size_t, const wchar_t*, void*, va_list);
    static const auto function = FromRuntime<Function>("__stdio_common_vswprintf");
    return FormattedBy(function, format, arguments);
}
