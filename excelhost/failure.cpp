#include "excelhost/failure.h"

#include "excelhost/characters.h"

#include <atomic>
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

}  // namespace excelhost
