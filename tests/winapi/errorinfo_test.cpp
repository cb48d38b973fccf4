// Error objects, one a thread, and the exception that carries them.
#include <windows.h>
#include <oleauto.h>
#include <comdef.h>

#include <gtest/gtest.h>

#include <thread>

namespace {

TEST(ErrorInfo, IsEachThreadsOwnAndOwnedByAnExceptionAndItsCopies) {
    ICreateErrorInfo* writer = nullptr;
    void* reader = nullptr;
    ASSERT_EQ(CreateErrorInfo(&writer), S_OK);
    ASSERT_EQ(writer->QueryInterface(IID_IErrorInfo, &reader), S_OK);
    writer->Release();
    auto* const info = static_cast<IErrorInfo*>(reader);
    const auto count = [&] {
        info->AddRef();
        return info->Release();
    };
    EXPECT_EQ(SetErrorInfo(0, info), S_OK);
    std::thread([&] {
        IErrorInfo* taken = nullptr;
        EXPECT_EQ(GetErrorInfo(0, &taken), S_FALSE) << "each thread has its own";
        SetErrorInfo(0, info);
        EXPECT_EQ(count(), 3U);
    }).join();
    EXPECT_EQ(count(), 2U) << "the thread's went with it";
    EXPECT_EQ(SetErrorInfo(0, nullptr), S_OK);
    info->AddRef();
    {
        const _com_error taken(E_FAIL, info);
        _com_error copy(taken), other(E_POINTER);
        other = copy;
        other = *&other;
        EXPECT_EQ(count(), 4U);
        copy = _com_error(E_POINTER);
        EXPECT_EQ(copy.ErrorInfo(), nullptr);
        IErrorInfo* const given = other.ErrorInfo();
        EXPECT_EQ(given, info);
        EXPECT_EQ(given->Release(), 3U);
    }
    EXPECT_EQ(info->Release(), 0U);
}

}  // namespace
