// The words of a command line, told apart as users of one expect: --option VALUE, --option=VALUE, --switch,
// and "--" ahead of operands that begin with a dash.
#pragma once

#include <functional>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace excelhost {

// A mistake on the command line.
class UsageError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

struct Option {
    std::string_view name;      // "--trace"
    std::function<void()> set;  // called for a switch, or
    std::function<void(const std::string&)>
        take;  // called with the value, once each time the option is given
};

// An option that sets a switch, keeps its last value, or gathers all of them.
[[nodiscard]] Option SwitchOption(std::string_view name, bool& target);
[[nodiscard]] Option TextOption(std::string_view name, std::string& target);
[[nodiscard]] Option ListOption(std::string_view name, std::vector<std::string>& target);
// The value is one of `known`, which must live as long as the option.
[[nodiscard]] Option ChoiceOption(std::string_view name, std::span<const std::string_view> known,
                                  std::string& target);

// Takes the options out of the words; gives the operands in their order. A lone "-" is one. UsageError for an
// option that isn't known, lacks its value or has one that it doesn't take.
[[nodiscard]] std::vector<std::string> ParseOptions(std::span<const std::string> words,
                                                    std::span<const Option> options);

// Whether the user asks for help: -h or --help stands among the options.
[[nodiscard]] bool AsksForHelp(std::span<const std::string> words) noexcept;

}  // namespace excelhost
