// What the tests of strings and arrays share.
#pragma once

#include "automation/automation.h"
#include "support/raised.h"

#include <gtest/gtest.h>

#include <initializer_list>
#include <string>
#include <vector>

// An array that a test destroys at its end, fixed or not.
struct TestArray {
    SAFEARRAY* array = nullptr;

    TestArray() = default;
    explicit TestArray(SAFEARRAY* made) : array(made) {}
    // `counts` leftmost dimension first; `features` such as FADF_FIXEDSIZE, which Visual Basic's Dim a(...)
    // has.
    TestArray(VARTYPE type, std::initializer_list<ULONG> counts, LONG lowerBound = 0, int features = 0) {
        std::vector<SAFEARRAYBOUND> bounds;
        for (const ULONG count : counts) bounds.push_back({count, lowerBound});
        array = SafeArrayCreate(type, static_cast<UINT>(bounds.size()), bounds.data());
        array->fFeatures |= static_cast<USHORT>(features);
    }
    ~TestArray() {
        if (array == nullptr) return;
        array->fFeatures &= static_cast<USHORT>(~(FADF_FIXEDSIZE | FADF_STATIC));
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

using support::Raised;

// The bytes behind a BSTR, and those of UTF-16 units.
inline std::string BytesOf(BSTR text) {
    return {reinterpret_cast<const char*>(text), SysStringByteLen(text)};
}
inline std::string Wide(const StdWString& units) {
    return {reinterpret_cast<const char*>(units.data()), units.size() * sizeof(WCHAR)};
}
