// Test programs that start themselves again as child processes, to see what only another process can see.
//
// A suite that links test_children gets its main from there: started with "--role NAME ARGUMENT...", the
// program plays that role instead of running tests. The two talk line by line over the child's standard input
// and output.
#pragma once

#include "support/system.h"

#include <string>

namespace support {

// Makes a function a role of this program; one static object a role.
class Role {
  public:
    Role(const char* name, int (*play)(const Arguments&));
};

// In a role: says a line to the parent.
void Say(const std::string& line);
// In a role: the parent's next line; empty when the parent has closed the child's input or is gone.
[[nodiscard]] std::string Hear();

// A running child. Whoever is still running at the end of the object is killed.
class Child {
  public:
    explicit Child(const std::string& role, const Arguments& arguments = {});
    ~Child();
    Child(Child&& other) noexcept;
    Child& operator=(Child&&) = delete;

    // The child's next line; empty when it has closed its output.
    [[nodiscard]] std::string ReadLine();
    void WriteLine(const std::string& line);
    // Closes the child's input and waits for its end. Gives the exit code, or -1 for a child that was killed.
    int Finish();
    // Ends the child at once, so that it has no chance to clean up, and waits for that.
    void Kill();

  private:
    Process process_;
};

}  // namespace support
