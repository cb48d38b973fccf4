#include "winapi/formatmessage.h"

#include "failure.h"

#include <algorithm>
#include <string_view>

using winapi::AtBorder;
using winapi::Failure;

namespace {

struct Entry {
    DWORD code;
    std::u16string_view text;
};

// Of the codes that calls here give, and of Excel's automation; in the words of English Windows, in the order
// of the codes.
constexpr Entry entries[] = {
    {0, u"The operation completed successfully."},
    {2, u"The system cannot find the file specified."},
    {3, u"The system cannot find the path specified."},
    {4, u"The system cannot open the file."},
    {5, u"Access is denied."},
    {6, u"The handle is invalid."},
    {8, u"Not enough memory resources are available to process this command."},
    {13, u"The data is invalid."},
    {18, u"There are no more files."},
    {24, u"The program issued a command but the command length is incorrect."},
    {31, u"A device attached to the system is not functioning."},
    {32, u"The process cannot access the file because it is being used by another process."},
    {50, u"The request is not supported."},
    {53, u"The network path was not found."},
    {80, u"The file exists."},
    {87, u"The parameter is incorrect."},
    {112, u"There is not enough space on the disk."},
    {122, u"The data area passed to a system call is too small."},
    {123, u"The filename, directory name, or volume label syntax is incorrect."},
    {126, u"The specified module could not be found."},
    {127, u"The specified procedure could not be found."},
    {145, u"The directory is not empty."},
    {161, u"The specified path is invalid."},
    {183, u"Cannot create a file when that file already exists."},
    {193, u"%1 is not a valid Win32 application."},
    {206, u"The filename or extension is too long."},
    {234, u"More data is available."},
    {259, u"No more data is available."},
    {267, u"The directory name is invalid."},
    {288, u"Attempt to release mutex not owned by caller."},
    {1004, u"Invalid flags."},
    {1018, u"Illegal operation attempted on a registry key that has been marked for deletion."},
    {1113, u"No mapping for the Unicode character exists in the target multi-byte code page."},
    {1305, u"The revision level is unknown."},
    {1332, u"No mapping between account names and security IDs was done."},
    {1338, u"The security descriptor structure is invalid."},
    {1400, u"Invalid window handle."},
    {1407, u"Cannot find window class."},
    {1410, u"Class already exists."},
    {1411, u"Class does not exist."},
    {1812, u"The specified image file did not contain a resource section."},
    {1813, u"The specified resource type cannot be found in the image file."},
    {1815, u"The specified resource language ID cannot be found in the image file."},
    {0x80004001, u"Not implemented"},
    {0x80004002, u"No such interface supported"},
    {0x80004003, u"Invalid pointer"},
    {0x80004005, u"Unspecified error"},
    {0x8000FFFF, u"Catastrophic failure"},
    {0x80010001, u"Call was rejected by callee."},
    {0x80010108, u"The object invoked has disconnected from its clients."},
    {0x8001010A, u"The message filter indicated that the application is busy."},
    {0x80020001, u"Unknown interface."},
    {0x80020003, u"Member not found."},
    {0x80020004, u"Parameter not found."},
    {0x80020005, u"Type mismatch."},
    {0x80020006, u"Unknown name."},
    {0x80020007, u"No named arguments."},
    {0x80020008, u"Bad variable type."},
    {0x80020009, u"Exception occurred."},
    {0x8002000A, u"Out of present range."},
    {0x8002000B, u"Invalid index."},
    {0x8002000D, u"Memory is locked."},
    {0x8002000E, u"Invalid number of parameters."},
    {0x8002000F, u"Parameter not optional."},
};

std::u16string_view TextOf(DWORD code) {
    const DWORD unwrapped = code >> 16 == 0x8007 ? code & 0xFFFF : code;
    const Entry* const found = std::ranges::lower_bound(entries, unwrapped, {}, &Entry::code);
    if (found == std::end(entries) || found->code != unwrapped) throw Failure{ERROR_MR_MID_NOT_FOUND};
    return found->text;
}

constexpr bool IsSpoken(DWORD language) noexcept {
    constexpr DWORD neutral = 0, english = 9;
    const DWORD primary = language & 0x3FF;
    return primary == neutral || primary == english;
}

}  // namespace

DWORD WINAPI FormatMessageW(DWORD flags, LPCVOID, DWORD code, DWORD language, LPWSTR text, DWORD size,
                            char**) noexcept {
    constexpr std::u16string_view end = u"\r\n";
    return AtBorder(DWORD{0}, [&] {
        if (flags != FORMAT_MESSAGE_FROM_SYSTEM) throw Failure{ERROR_INVALID_PARAMETER};
        const std::u16string_view found = TextOf(code);
        if (!IsSpoken(language)) throw Failure{ERROR_RESOURCE_LANG_NOT_FOUND};
        if (found.find(u'%') != found.npos) throw Failure{ERROR_INVALID_PARAMETER};
        const std::size_t length = found.size() + end.size();
        if (size <= length) throw Failure{ERROR_INSUFFICIENT_BUFFER};
        end.copy(text + found.copy(text, found.size()), end.size());
        text[length] = u'\0';
        return static_cast<DWORD>(length);
    });
}
