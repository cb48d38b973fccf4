// What a host has found wrong with add-ins, each once and by its name, however often it happened.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace excelhost {

struct Finding {
    std::string text;     // "'TRY.ADD' of try.xll wrote into memory that it was only lent"
    bool isFault = true;  // false for what is worth a word and no more
    std::size_t count = 1;
    std::optional<std::size_t>
        call;  // the first one that it is about, by its number in the journal, if one is kept
};

// Not locked: who shares it locks it.
class Findings {
  public:
    void Add(std::string text, bool isFault = true, std::optional<std::size_t> call = std::nullopt);
    [[nodiscard]] const std::vector<Finding>& All() const noexcept { return all_; }

  private:
    std::vector<Finding> all_;
};

// One line for people, with the count where there were several.
[[nodiscard]] std::string Describe(const Finding& finding);

}  // namespace excelhost
