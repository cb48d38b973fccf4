// Error objects, one a thread, and the exception that carries them.
#include <windows.h>
#include <oleauto.h>
#include <comdef.h>

#include <gtest/gtest.h>

#include <thread>

namespace {

class ErrorInfo : public testing::Test {
  protected:
    ErrorInfo() {
        ICreateErrorInfo* writer = nullptr;
        void* reader = nullptr;
        EXPECT_EQ(CreateErrorInfo(&writer), S_OK);
        EXPECT_EQ(writer->QueryInterface(IID_IErrorInfo, &reader), S_OK);
        writer->Release();
        info = static_cast<IErrorInfo*>(reader);
    }
    ~ErrorInfo() override { EXPECT_EQ(info->Release(), 0U); }

    [[nodiscard]] ULONG Count() const {
        info->AddRef();
        return info->Release();
    }

    IErrorInfo* info = nullptr;
};

TEST_F(ErrorInfo, OfAThreadIsGivenOnceAndReplacedByTheNext) {
    IErrorInfo* taken = nullptr;
    EXPECT_EQ(SetErrorInfo(0, info), S_OK);
    std::thread([&] {
        EXPECT_EQ(GetErrorInfo(0, &taken), S_FALSE) << "each thread has its own";
        SetErrorInfo(0, info);
        EXPECT_EQ(Count(), 3U);
    }).join();
    EXPECT_EQ(GetErrorInfo(0, &taken), S_OK);
    EXPECT_EQ(taken, info);
    EXPECT_EQ(Count(), 2U) << "the thread's went with it";
    SetErrorInfo(0, info);
    EXPECT_EQ(SetErrorInfo(0, nullptr), S_OK);
    EXPECT_EQ(GetErrorInfo(0, &taken), S_FALSE);
    EXPECT_EQ(taken, nullptr);
    EXPECT_EQ(info->Release(), 1U);
}

TEST_F(ErrorInfo, IsOwnedByAnExceptionAndItsCopies) {
    info->AddRef();
    {
        const _com_error taken(E_FAIL, info);
        _com_error copy(taken), other(E_POINTER);
        other = copy;
        other = *&other;
        EXPECT_EQ(Count(), 4U);
        copy = _com_error(E_POINTER);
        EXPECT_EQ(copy.ErrorInfo(), nullptr);
        IErrorInfo* const given = other.ErrorInfo();
        EXPECT_EQ(given, info);
        EXPECT_EQ(given->Release(), 3U);
    }
    // Published in comdef.h: a code of 16 bits stands 512 above the first of FACILITY_ITF.
    EXPECT_EQ(_com_error::WCodeToHRESULT(5), static_cast<HRESULT>(0x80040205U));
    EXPECT_EQ(_com_error::WCodeToHRESULT(0xFE00), static_cast<HRESULT>(0x8004FFFFU));
}

}  // namespace
