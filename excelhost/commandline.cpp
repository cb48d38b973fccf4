#include "excelhost/commandline.h"

#include <algorithm>

namespace excelhost {
namespace {

const Option& FindOption(std::span<const Option> options, std::string_view name) {
    const auto found = std::find_if(options.begin(), options.end(),
                                    [&](const Option& option) { return option.name == name; });
    if (found == options.end()) throw UsageError("unknown option '" + std::string(name) + "'");
    return *found;
}

}  // namespace

Option SwitchOption(std::string_view name, bool& target) {
    return {name, [&target] { target = true; }, {}};
}

Option TextOption(std::string_view name, std::string& target) {
    return {name, {}, [&target](const std::string& value) { target = value; }};
}

Option ListOption(std::string_view name, std::vector<std::string>& target) {
    return {name, {}, [&target](const std::string& value) { target.push_back(value); }};
}

Option ChoiceOption(std::string_view name, std::span<const std::string_view> known, std::string& target) {
    return {name, {}, [name, known, &target](const std::string& value) {
                if (std::find(known.begin(), known.end(), value) == known.end()) {
                    std::string names;
                    for (const std::string_view one : known) {
                        names += (names.empty() ? "" : ", ") + std::string(one);
                    }
                    throw UsageError(std::string(name) + " takes one of " + names + ", not '" + value + "'");
                }
                target = value;
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

bool AsksForHelp(std::span<const std::string> words) noexcept {
    const auto end = std::find(words.begin(), words.end(), "--");
    return std::any_of(words.begin(), end,
                       [](const std::string& word) { return word == "-h" || word == "--help"; });
}

}  // namespace excelhost
