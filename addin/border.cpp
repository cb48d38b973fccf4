#include "addin/detail/atborder.h"

#include "errors/vex.h"

#include <comdef.h>

#include <algorithm>
#include <exception>
#include <new>

namespace {

// Writes texts one behind the other, as far as there is room.
class TextWriter {
  public:
    explicit TextWriter(std::array<WCHAR, 256>& text) noexcept : next_(text.begin()), last_(text.end() - 1) {
        *next_ = 0;
    }

    template <typename Unit>
    void Write(const Unit* text) noexcept {
        while (*text != 0 && next_ != last_) *next_++ = static_cast<WCHAR>(*text++);
        *next_ = 0;
    }

  private:
    WCHAR* next_;
    WCHAR* last_;
};

}  // namespace

void ExportFailure::NoteCurrentException() noexcept {
    kind = FailureKind::Unknown;
    number = 0;
    TextWriter writer(text);
    try {
        throw;
    } catch (const VexException& record) {
        kind = FailureKind::Vex;
        number = static_cast<std::uint32_t>(record.code);
        writer.Write(record.key.GetString());
        writer.Write(TEXT(" in "));
        writer.Write(record.function.GetString());
        for (const CStringW& argument : record.args) {
            writer.Write(TEXT(", "));
            writer.Write(argument.GetString());
        }
    } catch (const _com_error& error) {
        kind = FailureKind::Automation;
        number = static_cast<std::uint32_t>(error.Error());
        writer.Write("_com_error");
    } catch (const std::bad_alloc& error) {
        kind = FailureKind::OutOfMemory;
        writer.Write(error.what());
    } catch (const std::exception& error) {
        kind = FailureKind::Standard;
        writer.Write(error.what());
    } catch (...) {
        writer.Write("unknown exception");
    }
}
