// A bar on a terminal for what takes long.
#pragma once

#include <cstddef>
#include <ostream>
#include <string>

namespace excelhost {

// Draws on one line of `err`, which is wiped at the end. Nothing is drawn when it is off.
class ProgressBar {
  public:
    ProgressBar(bool on, std::string what, std::ostream& err) : on_(on), what_(std::move(what)), err_(err) {}
    ~ProgressBar();
    ProgressBar(const ProgressBar&) = delete;
    ProgressBar& operator=(const ProgressBar&) = delete;

    // Draws when the share in per cent has changed.
    void Set(std::size_t done, std::size_t all);

  private:
    bool on_;
    std::string what_;
    std::ostream& err_;
    std::size_t shown_ = 0;  // per cent, and 1
};

}  // namespace excelhost
