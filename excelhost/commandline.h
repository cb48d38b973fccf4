// The words of a command line, told apart as users of one expect: --option VALUE, --option=VALUE, --switch,
// and "--" ahead of operands that begin with a dash.
#pragma once

#include <cstdint>
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
    std::string_view value;     // what the help calls its value, "FILE"; empty for a switch
    std::string_view help;      // one sentence or two, without line ends
    std::function<void()> set;  // called for a switch, or
    std::function<void(const std::string&)>
        take;  // called with the value, once each time the option is given
};

// An option that sets a switch, keeps its last value, or gathers all of them.
[[nodiscard]] Option SwitchOption(std::string_view name, std::string_view help, bool& target);
[[nodiscard]] Option TextOption(std::string_view name, std::string_view value, std::string_view help,
                                std::string& target);
[[nodiscard]] Option ListOption(std::string_view name, std::string_view value, std::string_view help,
                                std::vector<std::string>& target);
// The value is one of `known`, which must live as long as the option.
[[nodiscard]] Option ChoiceOption(std::string_view name, std::string_view value, std::string_view help,
                                  std::span<const std::string_view> known, std::string& target);
// The value is a whole number from `lowest` on.
[[nodiscard]] Option CountOption(std::string_view name, std::string_view value, std::string_view help,
                                 std::uint64_t lowest, std::uint64_t& target);

// Takes the options out of the words; gives the operands in their order. A lone "-" is one. UsageError for an
// option that isn't known, lacks its value or has one that it doesn't take.
[[nodiscard]] std::vector<std::string> ParseOptions(std::span<const std::string> words,
                                                    std::span<const Option> options);

// The options with what they do, in lines.
[[nodiscard]] std::string HelpOf(std::span<const Option> options);

// Text broken between words into lines of at most the help's width, each behind `indent` spaces.
[[nodiscard]] std::string Wrapped(std::string_view text, std::size_t indent);

// Whether the user asks for help: -h or --help stands among the options.
[[nodiscard]] bool AsksForHelp(std::span<const std::string> words) noexcept;

}  // namespace excelhost
