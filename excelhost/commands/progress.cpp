#include "excelhost/commands/progress.h"

namespace excelhost {
namespace {

constexpr std::size_t kWidth = 40;

}  // namespace

ProgressBar::~ProgressBar() {
    if (shown_ == 0) return;
    err_ << '\r' << std::string(what_.size() + kWidth + 9, ' ') << '\r' << std::flush;
}

void ProgressBar::Set(std::size_t done, std::size_t all) {
    const std::size_t percent = all == 0 ? 100 : done * 100 / all;
    if (!on_ || shown_ == percent + 1) return;
    shown_ = percent + 1;
    const std::size_t filled = percent * kWidth / 100;
    const std::string share = std::to_string(percent);
    err_ << '\r' << what_ << " [" << std::string(filled, '#') << std::string(kWidth - filled, ' ') << "] "
         << std::string(3 - share.size(), ' ') << share << '%' << std::flush;
}

}  // namespace excelhost
