#include "excelhost/failure.h"

#include "excelhost/characters.h"
#include "excelhost/value.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdio>
#include <exception>
#include <string_view>

namespace excelhost {
namespace {

std::atomic<ExceptionTeller> current_teller{nullptr};

}  // namespace

std::string CurrentExceptionText() {
    const ExceptionTeller teller = current_teller.load();
    if (std::string told = teller != nullptr ? teller() : std::string(); !told.empty()) {
        return Excerpt(std::string_view(told), 1000);
    }
    try {
        throw;
    } catch (const std::exception& error) {
        return Excerpt(std::string_view(error.what()), 1000);
    } catch (...) {
        return "an exception of a type unknown here";
    }
}

void SetExceptionTeller(ExceptionTeller teller) noexcept {
    current_teller = teller;
}

std::string ExportFailureText(std::span<const std::uintptr_t> parameters) {
    constexpr std::uintptr_t kOwn =
        1;  // of the library's own family: the text is "KEY in OPERATION, ARGUMENT..."
    constexpr std::uintptr_t kAutomation = 2;  // the number is an HRESULT
    if (parameters.size() < 4 || parameters[0] != 1 || parameters[3] == 0) {
        return "a failure that is told in a form unknown here";
    }
    std::string text = Utf8(reinterpret_cast<const WCHAR*>(parameters[3]));
    if (parameters[1] == kOwn) {
        const std::size_t keyEnd = std::min(text.find(" in "), text.size());
        text.insert(keyEnd, ", code " + std::to_string(parameters[2]) + ",");
    } else if (parameters[1] == kAutomation) {
        std::array<char, 16> code{};
        (void)std::snprintf(code.data(), code.size(), " %08X", static_cast<unsigned>(parameters[2]));
        text += code.data();
    }
    return Excerpt(std::string_view(text), 1000);
}

}  // namespace excelhost
