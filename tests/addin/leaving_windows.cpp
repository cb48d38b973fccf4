#include "leaving.h"

#include "support/takeexception.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

// The exception as border.h tells it.
void Note(const EXCEPTION_RECORD* exception, void* into) {
    auto& failure = *static_cast<ExportFailure*>(into);
    EXPECT_EQ(exception->ExceptionCode, ExportFailure::Code);
    EXPECT_EQ(exception->ExceptionFlags, static_cast<DWORD>(EXCEPTION_NONCONTINUABLE));
    ASSERT_EQ(exception->NumberParameters, 4u);
    EXPECT_EQ(exception->ExceptionInformation[0], 1u);
    failure.kind = static_cast<FailureKind>(exception->ExceptionInformation[1]);
    failure.number = static_cast<std::uint32_t>(exception->ExceptionInformation[2]);
    std::copy_n(reinterpret_cast<const WCHAR*>(exception->ExceptionInformation[3]), failure.text.size(),
                failure.text.begin());
}

}  // namespace

std::optional<ExportFailure> WhatLeaves(void (*call)()) {
    ExportFailure failure{};
    if (TakeException(call, &Note, &failure) == 0) return std::nullopt;
    return failure;
}
