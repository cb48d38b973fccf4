// An add-in in its life between load and unload, as Excel and the companion workbook lead it.
#pragma once

#include "excelhost/host.h"

#include <windows.h>

#include <cstdint>
#include <filesystem>
#include <functional>
#include <stdexcept>
#include <string>

namespace excelhost {

// The add-in can't be loaded, lacks an export or refuses to open. The text says which.
class AddInError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

// The add-in let an exception out where none may leave.
class AddInDied : public AddInError {
  public:
    using AddInError::AddInError;
};

// What is told of an exception in the handshake that this thread is in; empty when it is in none. For homes where
// some exceptions can't be caught.
[[nodiscard]] std::string HandshakeFailure(const std::string& why);

// The order of life is: construct, Handshake, cells calculate, LeaveWorkbook, Close, destroy. Each step may
// be left out; the destructor closes what is open. The two of the workbook are for add-ins that know it.
class Session {
  public:
    // Loads the file, makes it known to the host under its path and calls xlAutoOpen. AddInError.
    // `loaded` is called in between.
    Session(Host& host, const std::filesystem::path& addIn,
            const std::function<void(HMODULE)>& loaded = nullptr);
    ~Session();
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    // Whether the add-in exports the handshake of the companion workbook.
    [[nodiscard]] bool KnowsWorkbook() const noexcept;
    // Which of the two exports the workbook's code declares.
    enum class Form { VB, W };
    // The workbook has loaded: passes numbers and strings as the workbook's code does. AddInError when the
    // export is missing or the add-in raises an exception.
    void Handshake(Form form = Form::VB);
    // The workbook leaves.
    void LeaveWorkbook();
    // xlAutoClose, where there is one; nothing the second time.
    void Close();

    // The file name without folder, as the add-in registers itself.
    [[nodiscard]] const Text& FileName() const noexcept { return fileName_; }

    // xlAutoClose for an Excel that stays: it has asked about an unsaved workbook, and the user has cancelled.
    // Excel doesn't open the add-in anew.
    void CancelledClose();

    // -- The add-in manager.

    // What xlAddInManagerInfo12 gives as the add-in's long name; empty when there is none.
    [[nodiscard]] std::string LongName();
    // xlAutoAdd behind xlAutoOpen, xlAutoRemove ahead of xlAutoClose, where they are there.
    void Added();
    void Removed();

  private:
    void Open();
    void CallIfThere(const char* procedure);
    // Null when there is none.
    template <class Function>
    [[nodiscard]] Function Find(const char* name) const noexcept;
    // AddInError when there is none.
    template <class Function>
    [[nodiscard]] Function Export(const char* name) const;

    HMODULE module_;
    Text fileName_;
    bool open_ = false;
};

}  // namespace excelhost
