// Error objects, one a thread, and the exception that carries them.
#include "olevalues.h"

#include <comdef.h>

#include <gtest/gtest.h>

#include <thread>

namespace {

// A new error object, with the one reference that the caller owns.
IErrorInfo* NewError() {
    ICreateErrorInfo* writer = nullptr;
    EXPECT_EQ(CreateErrorInfo(&writer), S_OK);
    void* reader = nullptr;
    EXPECT_EQ(writer->QueryInterface(IID_IErrorInfo, &reader), S_OK);
    writer->Release();
    return static_cast<IErrorInfo*>(reader);
}

ULONG Count(IUnknown* object) {
    object->AddRef();
    return object->Release();
}

TEST(ErrorInfo, AThreadsErrorIsGivenOnceAndReplacedByTheNext) {
    IErrorInfo* const first = NewError();
    IErrorInfo* const second = NewError();
    EXPECT_EQ(SetErrorInfo(0, first), S_OK);
    EXPECT_EQ(Count(first), 2U);
    EXPECT_EQ(SetErrorInfo(0, second), S_OK);
    EXPECT_EQ(Count(first), 1U);
    std::thread([&] {
        IErrorInfo* taken = nullptr;
        EXPECT_EQ(GetErrorInfo(0, &taken), S_FALSE) << "each thread has its own";
        SetErrorInfo(0, first);
    }).join();
    EXPECT_EQ(Count(first), 1U) << "the thread's went with it";

    IErrorInfo* taken = nullptr;
    EXPECT_EQ(GetErrorInfo(0, &taken), S_OK);
    EXPECT_EQ(taken, second);
    EXPECT_EQ(Count(second), 2U);
    taken->Release();
    EXPECT_EQ(GetErrorInfo(0, &taken), S_FALSE);
    EXPECT_EQ(taken, nullptr);
    SetErrorInfo(0, second);
    EXPECT_EQ(SetErrorInfo(0, nullptr), S_OK);
    EXPECT_EQ(first->Release(), 0U);
    EXPECT_EQ(second->Release(), 0U);
}

TEST(ErrorInfo, TextsThatWereNeverSetComeAsNull) {
    IErrorInfo* const error = NewError();
    for (const auto read : {&IErrorInfo::GetSource, &IErrorInfo::GetDescription, &IErrorInfo::GetHelpFile}) {
        WCHAR before = 0;
        BSTR text = &before;
        EXPECT_EQ((error->*read)(&text), S_OK);
        EXPECT_EQ(text, nullptr);
    }
    EXPECT_EQ(error->Release(), 0U);
}

TEST(ComError, OwnsItsErrorObjectThroughCopies) {
    IErrorInfo* const info = NewError();
    info->AddRef();  // of the test's own, to look at the count afterwards
    {
        const _com_error taken(E_FAIL, info);
        EXPECT_EQ(Count(info), 2U);
        _com_error copy(taken);
        _com_error other(E_POINTER);
        other = copy;
        other = *&other;
        EXPECT_EQ(Count(info), 4U);
        copy = _com_error(E_POINTER);
        EXPECT_EQ(copy.ErrorInfo(), nullptr);
        IErrorInfo* const given = other.ErrorInfo();
        EXPECT_EQ(given, info);
        EXPECT_EQ(Count(info), 4U);
        given->Release();
    }
    EXPECT_EQ(info->Release(), 0U);
}

// Published in comdef.h: a code of 16 bits stands 512 above the first of FACILITY_ITF.
TEST(ComError, CodesOfExceptionsAsHresults) {
    EXPECT_EQ(_com_error::WCodeToHRESULT(5), static_cast<HRESULT>(0x80040205U));
    EXPECT_EQ(_com_error::WCodeToHRESULT(0xFE00), static_cast<HRESULT>(0x8004FFFFU));
    EXPECT_EQ(_com_error(static_cast<HRESULT>(0x800403E8U)).WCode(), 1000 - 512);
    EXPECT_EQ(_com_error(E_FAIL).WCode(), 0);
}

}  // namespace
