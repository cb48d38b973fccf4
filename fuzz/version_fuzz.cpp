// Images of Windows and of Linux with a version resource, or what claims to be one: nothing beyond the file's
// or the block's end is read.
#include "fuzz.h"

#include "platform/fileversioninfo.h"

#include <windows.h>

#include <memory>
#include <string>
#include <string_view>

#include <sys/mman.h>
#include <unistd.h>

using fuzz::Check;

namespace {

// A file in memory, and its path as Windows writes it.
class MemoryFile {
  public:
    explicit MemoryFile(fuzz::Bytes content) : descriptor_(memfd_create("image", MFD_CLOEXEC)) {
        Check(write(descriptor_, content.data(), content.size()) == static_cast<ssize_t>(content.size()),
              "a file");
        for (const char unit : "\\proc\\self\\fd\\" + std::to_string(descriptor_))
            path_ += static_cast<WCHAR>(unit);
    }
    ~MemoryFile() { close(descriptor_); }
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;

    [[nodiscard]] const WCHAR* Path() const noexcept { return path_.c_str(); }

  private:
    int descriptor_;
    std::u16string path_;
};

void CheckTexts(const FileVersionInfo& info) {
    for (std::uint32_t index = 0; index < 13; ++index) {
        const CStringW text = info.GetString(index);
        Check(text.IsEmpty() || info.HasString(index) != 0, "a text is an entry's");
        Check(text.Find(u'\0') < 0, "a text ends before its first zero unit");
    }
    static_cast<void>(info.CodePageName());
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const MemoryFile file({data, size});
    const FileVersionInfo info(file.Path());
    CheckTexts(info);
    const DWORD bytes = GetFileVersionInfoSizeW(file.Path(), nullptr);
    Check(bytes != 0 || info.data == nullptr, "nothing is loaded without a block");
    if (bytes == 0) return 0;
    Check(bytes <= size, "the block is a part of the file");
    const std::unique_ptr<BYTE[]> block(new BYTE[bytes]);
    Check(GetFileVersionInfoW(file.Path(), 0, bytes, block.get()) != FALSE, "a size means a block");
    for (const WCHAR* query :
         {u"\\", u"\\VarFileInfo\\Translation", u"\\StringFileInfo\\040704E4\\companyname",
          u"\\StringFileInfo\\040704E4\\Comments", u"\\StringFileInfo\\040704E4\\x"}) {
        void* value = nullptr;
        UINT length = 0;
        if (VerQueryValueW(block.get(), query, &value, &length) == FALSE) continue;
        // Units of a text, bytes of anything else.
        const std::basic_string_view<BYTE> found(static_cast<const BYTE*>(value), length);
        Check(found.data() >= block.get() && found.data() + found.size() <= block.get() + bytes,
              "a part of the block");
    }
    return 0;
}
