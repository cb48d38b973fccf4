// Room for the handler of a crash on a thread whose own stack has overflowed.
#pragma once

#include <memory>

namespace excelhost {

// Serves the thread that makes it, for as long as it lives.
class CrashStack {
  public:
    CrashStack();
    ~CrashStack();
    CrashStack(const CrashStack&) = delete;
    CrashStack& operator=(const CrashStack&) = delete;

  private:
    struct Room;
    std::unique_ptr<Room> room_;
};

}  // namespace excelhost
