#include "excelhost/commandline.h"

#include <algorithm>
#include <charconv>
#include <utility>

namespace excelhost {
namespace {

const Option& FindOption(std::span<const Option> options, std::string_view name) {
    const auto found = std::find_if(options.begin(), options.end(),
                                    [&](const Option& option) { return option.name == name; });
    if (found == options.end()) throw UsageError("unknown option '" + std::string(name) + "'");
    return *found;
}

}  // namespace

Option SwitchOption(std::string_view name, std::string_view help, bool& target) {
    return {name, {}, help, [&target] { target = true; }, {}};
}

Option TextOption(std::string_view name, std::string_view value, std::string_view help, std::string& target) {
    return {name, value, help, {}, [&target](const std::string& given) { target = given; }};
}

Option ListOption(std::string_view name, std::string_view value, std::string_view help,
                  std::vector<std::string>& target) {
    return {name, value, help, {}, [&target](const std::string& given) { target.push_back(given); }};
}

Option ChoiceOption(std::string_view name, std::string_view value, std::string_view help,
                    std::span<const std::string_view> known, std::string& target) {
    return {name, value, help, {}, [name, known, &target](const std::string& given) {
                if (std::find(known.begin(), known.end(), given) == known.end()) {
                    std::string names;
                    for (const std::string_view one : known) {
                        names += (names.empty() ? "" : ", ") + std::string(one);
                    }
                    throw UsageError(std::string(name) + " takes one of " + names + ", not '" + given + "'");
                }
                target = given;
            }};
}

Option CountOption(std::string_view name, std::string_view value, std::string_view help, std::uint64_t lowest,
                   std::uint64_t& target) {
    return {name, value, help, {}, [name, lowest, &target](const std::string& given) {
                const char* const end = given.data() + given.size();
                const auto [rest, error] = std::from_chars(given.data(), end, target);
                if (error == std::errc() && rest == end && target >= lowest) return;
                throw UsageError(std::string(name) + " takes a whole number from " + std::to_string(lowest) +
                                 " on, not '" + given + "'");
            }};
}

std::vector<std::string> ParseOptions(std::span<const std::string> words, std::span<const Option> options) {
    std::vector<std::string> operands;
    for (std::size_t next = 0; next < words.size(); ++next) {
        const std::string& word = words[next];
        if (word == "--") {
            operands.insert(operands.end(), words.begin() + static_cast<std::ptrdiff_t>(next) + 1,
                            words.end());
            break;
        }
        if (word.size() < 2 || word.front() != '-') {
            operands.push_back(word);
            continue;
        }
        const std::size_t equals = word.find('=');
        const std::string name = word.substr(0, equals);
        const Option& option = FindOption(options, name);
        if (option.set) {
            if (equals != std::string::npos) throw UsageError(name + " takes no value");
            option.set();
        } else if (equals != std::string::npos) {
            option.take(word.substr(equals + 1));
        } else {
            if (++next == words.size()) throw UsageError(name + " needs a value");
            option.take(words[next]);
        }
    }
    return operands;
}

std::string HelpOf(std::span<const Option> options) {
    constexpr std::size_t column = 25;
    std::string lines;
    for (const Option& option : options) {
        std::string head = "  " + std::string(option.name);
        if (!option.value.empty()) head += " " + std::string(option.value);
        std::string text = Wrapped(option.help, column);
        // A long head has a line of its own.
        if (head.size() < column) {
            text.replace(0, head.size(), head);
        } else {
            text.insert(0, head + "\n");
        }
        lines += text;
    }
    return lines;
}

std::string Wrapped(std::string_view text, std::size_t indent) {
    constexpr std::size_t width = 118;
    std::string lines;
    std::string line;
    while (!text.empty()) {
        const std::string_view word = text.substr(0, text.find(' '));
        text.remove_prefix(std::min(word.size() + 1, text.size()));
        if (!line.empty() && line.size() + 1 + word.size() > width) lines += std::exchange(line, {}) + "\n";
        line += line.empty() ? std::string(indent, ' ') : " ";
        line += word;
    }
    return lines + line + "\n";
}

bool AsksForHelp(std::span<const std::string> words) noexcept {
    const auto end = std::find(words.begin(), words.end(), "--");
    return std::any_of(words.begin(), end,
                       [](const std::string& word) { return word == "-h" || word == "--help"; });
}

}  // namespace excelhost
