// Error objects, one a thread, and the exception that carries them.
#include <windows.h>
#include <oleauto.h>
#include <comdef.h>

#include <gtest/gtest.h>

#include <string>
#include <thread>

namespace {

using Wide = std::basic_string<WCHAR>;

Wide Taken(BSTR text) {
    const Wide result = text ? Wide(text, SysStringLen(text)) : TEXT("(null)");
    SysFreeString(text);
    return result;
}

// A new error object by its description, with the one reference that the caller owns.
IErrorInfo* NewError(const WCHAR* description) {
    ICreateErrorInfo* writer = nullptr;
    EXPECT_EQ(CreateErrorInfo(&writer), S_OK);
    writer->SetDescription(const_cast<LPOLESTR>(description));
    void* reader = nullptr;
    EXPECT_EQ(writer->QueryInterface(IID_IErrorInfo, &reader), S_OK);
    writer->Release();
    return static_cast<IErrorInfo*>(reader);
}

ULONG Count(IUnknown* object) {
    object->AddRef();
    return object->Release();
}

TEST(ErrorInfo, WhatWasWrittenIsRead) {
    ICreateErrorInfo* writer = nullptr;
    ASSERT_EQ(CreateErrorInfo(&writer), S_OK);
    writer->SetGUID(IID_IDispatch);
    WCHAR source[] = TEXT("Excel");
    WCHAR description[] = TEXT("first");
    WCHAR again[] = TEXT("second");
    WCHAR help[] = TEXT("help.chm");
    EXPECT_EQ(writer->SetSource(source), S_OK);
    EXPECT_EQ(writer->SetDescription(description), S_OK);
    EXPECT_EQ(writer->SetDescription(again), S_OK);
    EXPECT_EQ(writer->SetHelpFile(help), S_OK);
    EXPECT_EQ(writer->SetHelpContext(17), S_OK);

    void* asReader = nullptr;
    ASSERT_EQ(writer->QueryInterface(IID_IErrorInfo, &asReader), S_OK);
    auto* const reader = static_cast<IErrorInfo*>(asReader);
    BSTR text = nullptr;
    EXPECT_EQ(reader->GetSource(&text), S_OK);
    EXPECT_EQ(Taken(text), TEXT("Excel"));
    EXPECT_EQ(reader->GetDescription(&text), S_OK);
    EXPECT_EQ(Taken(text), TEXT("second"));
    EXPECT_EQ(reader->GetHelpFile(&text), S_OK);
    EXPECT_EQ(Taken(text), TEXT("help.chm"));
    DWORD context = 0;
    EXPECT_EQ(reader->GetHelpContext(&context), S_OK);
    EXPECT_EQ(context, 17U);
    GUID guid{};
    EXPECT_EQ(reader->GetGUID(&guid), S_OK);
    EXPECT_TRUE(guid == IID_IDispatch);

    void* back = nullptr;
    ASSERT_EQ(reader->QueryInterface(IID_ICreateErrorInfo, &back), S_OK);
    EXPECT_EQ(back, writer);
    void* none = &back;
    EXPECT_EQ(reader->QueryInterface(IID_IDispatch, &none), E_NOINTERFACE);
    EXPECT_EQ(none, nullptr);
    writer->Release();
    writer->Release();
    EXPECT_EQ(reader->Release(), 0U);
}

TEST(ErrorInfo, TextsThatWereNeverSetComeAsNull) {
    IErrorInfo* const error = NewError(nullptr);
    for (const auto read : {&IErrorInfo::GetSource, &IErrorInfo::GetDescription, &IErrorInfo::GetHelpFile}) {
        BSTR text = nullptr;
        EXPECT_EQ((error->*read)(&text), S_OK);
        EXPECT_EQ(Taken(text), TEXT("(null)"));
    }
    error->Release();
}

TEST(ErrorInfo, AThreadsErrorIsGivenOnceAndReplacedByTheNext) {
    IErrorInfo* const first = NewError(TEXT("first"));
    IErrorInfo* const second = NewError(TEXT("second"));
    EXPECT_EQ(SetErrorInfo(0, first), S_OK);
    EXPECT_EQ(Count(first), 2U);
    EXPECT_EQ(SetErrorInfo(0, second), S_OK);
    EXPECT_EQ(Count(first), 1U);

    IErrorInfo* taken = nullptr;
    EXPECT_EQ(GetErrorInfo(0, &taken), S_OK);
    EXPECT_EQ(taken, second);
    EXPECT_EQ(Count(second), 2U);
    taken->Release();
    EXPECT_EQ(GetErrorInfo(0, &taken), S_FALSE);
    EXPECT_EQ(taken, nullptr);

    SetErrorInfo(0, second);
    EXPECT_EQ(SetErrorInfo(0, nullptr), S_OK);
    EXPECT_EQ(Count(second), 1U);
    EXPECT_EQ(first->Release(), 0U);
    EXPECT_EQ(second->Release(), 0U);
    EXPECT_EQ(GetErrorInfo(1, &taken), E_INVALIDARG);
    EXPECT_EQ(GetErrorInfo(0, nullptr), E_INVALIDARG);
}

TEST(ErrorInfo, EachThreadHasItsOwn) {
    IErrorInfo* const here = NewError(TEXT("here"));
    SetErrorInfo(0, here);
    std::thread([] {
        IErrorInfo* taken = nullptr;
        EXPECT_EQ(GetErrorInfo(0, &taken), S_FALSE);
        IErrorInfo* const there = NewError(TEXT("there"));
        SetErrorInfo(0, there);
        there->Release();
    }).join();
    IErrorInfo* taken = nullptr;
    EXPECT_EQ(GetErrorInfo(0, &taken), S_OK);
    EXPECT_EQ(taken, here);
    taken->Release();
    EXPECT_EQ(here->Release(), 0U);
}

TEST(ComError, OwnsItsErrorObjectThroughCopies) {
    IErrorInfo* const info = NewError(TEXT("why"));
    {
        const _com_error taken(E_FAIL, info);
        EXPECT_EQ(Count(info), 1U);
        _com_error copy(taken);
        EXPECT_EQ(Count(info), 2U);
        _com_error other(E_POINTER);
        other = copy;
        other = *&other;
        EXPECT_EQ(Count(info), 3U);
        EXPECT_EQ(other.Error(), E_FAIL);
        copy = _com_error(E_POINTER);
        EXPECT_EQ(Count(info), 2U);
        EXPECT_EQ(copy.ErrorInfo(), nullptr);

        IErrorInfo* const given = other.ErrorInfo();
        EXPECT_EQ(given, info);
        EXPECT_EQ(Count(info), 3U);
        given->Release();
        info->AddRef();  // of the test's own, to look at the count afterwards
    }
    EXPECT_EQ(info->Release(), 0U);
}

TEST(ComError, CodesOfExceptionsAsHresults) {
    EXPECT_EQ(_com_error::WCodeToHRESULT(5), static_cast<HRESULT>(0x80040205U));
    EXPECT_EQ(_com_error::WCodeToHRESULT(0xFDFF), static_cast<HRESULT>(0x8004FFFFU));
    EXPECT_EQ(_com_error::WCodeToHRESULT(0xFE00), static_cast<HRESULT>(0x8004FFFFU));
    EXPECT_EQ(_com_error::HRESULTToWCode(static_cast<HRESULT>(0x80040205U)), 5);
    EXPECT_EQ(_com_error::HRESULTToWCode(E_FAIL), 0);
    EXPECT_EQ(_com_error(static_cast<HRESULT>(0x800403E8U)).WCode(), 1000 - 512);
    EXPECT_EQ(_com_error(E_FAIL).WCode(), 0);
}

TEST(ComError, IssuingThrowsIt) {
    try {
        _com_issue_error(DISP_E_OVERFLOW);
    } catch (const _com_error& error) {
        EXPECT_EQ(error.Error(), DISP_E_OVERFLOW);
        return;
    }
    FAIL() << "nothing was thrown";
}

}  // namespace
