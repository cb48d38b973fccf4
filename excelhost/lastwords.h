// What is to be said when the program ends in an add-in's code.
#pragma once

#include "excelhost/callscope.h"
#include "excelhost/machine/lastfile.h"

#include <array>
#include <cstddef>
#include <string_view>

namespace excelhost {

// A message that is put together in place, for handlers of crashes. What doesn't fit is left out.
class Message {
  public:
    Message& operator<<(std::string_view text) noexcept;
    Message& operator<<(int number) noexcept;

    [[nodiscard]] std::string_view Text() const noexcept { return {text_.data(), size_}; }

  private:
    std::array<char, 4096> text_{};
    std::size_t size_ = 0;
};

// Adds whose code runs on a thread, this one if none is given, and its last calls into Excel: "in xlAutoOpen of
// try.xll; its last calls into Excel: xlGetName xlfRegister". Where a thread waits for others it is the first of them
// that runs an add-in's code. False, and nothing is added, when none does.
// Takes neither memory nor a lock, for an add-in may have crashed where it holds both.
[[nodiscard]] bool AddLastWords(Message& message,
                                const ThreadNotes& thread = ThreadNotes::OfThisThread()) noexcept;

// What is told of the program's end goes to this file, too, as a line of a journal; null for none.
void SetLastFile(const LastFile* file) noexcept;
// `message` is a line for people, "excelhost: a crash ...". Called once.
void TellLastFile(std::string_view message) noexcept;

}  // namespace excelhost
