// The add-ins that are loaded and the functions and commands that they have registered.
#pragma once

#include "excelhost/machine/invoke.h"
#include "excelhost/typetext.h"
#include "excelhost/value.h"

#include <functional>
#include <map>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace excelhost {

// Gives the address of a procedure by its exported name, null when there is none.
using ModuleExports = std::function<FARPROC(const char* procedure)>;

// A loaded add-in.
struct Module {
    Text path;      // full, or the file name alone
    Text fileName;  // without folder
    ModuleExports exports;
    HINSTANCE instance = nullptr;
};

// A registered worksheet function or command.
struct Registration {
    enum class Kind { HiddenFunction = 0, Function = 1, Command = 2 };

    double id = 0;
    Text module;  // as it was registered
    Text procedure;
    Text typeText;
    Text functionText;
    Text argumentText;
    // What the function wizard and the menus show; empty where it was left out.
    Text category;  // a number stands for one of Excel's own
    Text shortcut;
    Text helpTopic;
    Text functionHelp;
    std::vector<Text> argumentHelp;
    Kind kind = Kind::Function;
    TypeText type;
    FARPROC entry = nullptr;
    FARPROC freeResult = nullptr;     // the module's xlAutoFree12; null when it exports none
    FARPROC freeOldResult = nullptr;  // its xlAutoFree
    std::shared_ptr<const Signature> signature;
    std::string shownName;  // for people: "'TRY.ADD' of try.xll"

    [[nodiscard]] std::size_t Arity() const noexcept { return type.arguments.size(); }
};

// Names without regard to case.
struct NameOrder {
    using is_transparent = void;
    [[nodiscard]] bool operator()(TextView a, TextView b) const noexcept;
};

// Not locked: who shares it locks it.
class Registrations {
  public:
    // A module of the same file name is replaced.
    void AddModule(Module module);
    // A module whose path or file name this is, case aside; null when there is none.
    [[nodiscard]] const Module* FindModule(TextView pathOrFileName) const;
    [[nodiscard]] const std::vector<Module>& Modules() const noexcept { return modules_; }

    // Gives the registration its id.
    std::shared_ptr<const Registration> Add(Registration registration);
    // False when nothing is registered under the id.
    bool Remove(double id);
    // All of the module with this path or file name; gives their number.
    std::size_t RemoveModule(TextView pathOrFileName);
    // The newest under a function text; null when there is none.
    [[nodiscard]] std::shared_ptr<const Registration> Find(TextView functionText) const;
    [[nodiscard]] std::shared_ptr<const Registration> FindById(double id) const;
    // The newest of a procedure of the module.
    [[nodiscard]] std::shared_ptr<const Registration> FindProcedure(const Module& module,
                                                                    TextView procedure) const;
    // In the order in which they were made.
    [[nodiscard]] const std::vector<std::shared_ptr<const Registration>>& All() const noexcept {
        return all_;
    }

  private:
    std::vector<Module> modules_;
    std::vector<std::shared_ptr<const Registration>> all_;
    std::map<Text, std::vector<std::shared_ptr<const Registration>>, NameOrder> byName_;
    double nextId_ = 1001;
};

// The file name behind the last separator of a path.
[[nodiscard]] TextView FileNameOf(TextView path) noexcept;

}  // namespace excelhost
