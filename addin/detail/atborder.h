// The border of the add-in: every export runs its body within AtBorder.
#pragma once

#include "addin/border.h"

#include <exportguard.h>

#include <array>
#include <cstdint>
#include <utility>

// What is told of an exception that leaves an export. A plain record: noting takes no memory.
struct ExportFailure {
    static constexpr DWORD Code = ExportFailureCode;

    FailureKind kind;
    std::uint32_t number;
    std::array<WCHAR, 256> text;  // cut to this size

    // Notes the exception that is being handled.
    void NoteCurrentException() noexcept;

    [[nodiscard]] std::array<ULONG_PTR, 4> Parameters() const noexcept {
        return {1, static_cast<ULONG_PTR>(kind), number, reinterpret_cast<ULONG_PTR>(text.data())};
    }
};

// Runs the body of an export and gives what it gives.
template <typename Body>
auto AtBorder(Body body) {
    return winapi::GuardExport<ExportFailure>(std::move(body));
}
