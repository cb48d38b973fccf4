// What the tests of arrays share.
#pragma once

#include "automation/automation.h"
#include "errors/vex.h"

#include <gtest/gtest.h>

#include <functional>
#include <initializer_list>
#include <string>
#include <vector>

// An array that a test destroys at its end, fixed or not.
struct TestArray {
    SAFEARRAY* array = nullptr;

    TestArray() = default;
    explicit TestArray(SAFEARRAY* made) : array(made) {}
    ~TestArray() {
        if (array == nullptr) return;
        array->fFeatures &= static_cast<USHORT>(~FADF_FIXEDSIZE);
        EXPECT_EQ(array->cLocks, 0u);
        EXPECT_EQ(SafeArrayDestroy(array), S_OK);
    }
    TestArray(const TestArray&) = delete;
    TestArray& operator=(const TestArray&) = delete;
    operator SAFEARRAY*() const { return array; }
    SAFEARRAY* operator->() const { return array; }

    template <typename Element>
    [[nodiscard]] std::vector<Element> Data() const {
        const auto* const first = static_cast<const Element*>(array->pvData);
        return {first, first + VbArrayElementCount(array)};
    }
};

// `counts` leftmost dimension first.
inline SAFEARRAY* MakeArray(VARTYPE type, std::initializer_list<ULONG> counts, LONG lowerBound = 0) {
    std::vector<SAFEARRAYBOUND> bounds;
    for (const ULONG count : counts) bounds.push_back({count, lowerBound});
    return SafeArrayCreate(type, static_cast<UINT>(bounds.size()), bounds.data());
}

// As Visual Basic's Dim a(...) makes it.
inline SAFEARRAY* MakeFixedArray(VARTYPE type, std::initializer_list<ULONG> counts, LONG lowerBound = 0) {
    SAFEARRAY* const array = MakeArray(type, counts, lowerBound);
    array->fFeatures |= FADF_FIXEDSIZE;
    return array;
}

// Expects that `attempt` raises a record of the class `key`.
inline void ExpectRaised(const char* key, const char* function, std::int32_t code,
                         const std::vector<CStringW>& args, const std::function<void()>& attempt) {
    try {
        attempt();
        ADD_FAILURE() << "nothing was raised";
    } catch (VexException record) {
        EXPECT_EQ(record.key, key);
        EXPECT_EQ(record.function, function);
        EXPECT_EQ(record.code, code);
        EXPECT_EQ(record.args, args);
    }
}
