#include "support/children.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <stdexcept>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

namespace support {
namespace {

struct Pipe {
    int read = -1;
    int write = -1;

    Pipe() {
        std::array<int, 2> ends{};
        if (pipe2(ends.data(), O_CLOEXEC) != 0) throw std::runtime_error("pipe2");
        read = ends[0];
        write = ends[1];
    }
};

}  // namespace

class Child::Process {
  public:
    explicit Process(Arguments arguments) {
        Pipe toChild;
        Pipe fromChild;
        input_ = toChild.write;
        output_ = fromChild.read;
        std::vector<char*> pointers;
        for (std::string& argument : arguments) pointers.push_back(argument.data());
        pointers.push_back(nullptr);

        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_adddup2(&actions, toChild.read, STDIN_FILENO);
        posix_spawn_file_actions_adddup2(&actions, fromChild.write, STDOUT_FILENO);
        const int error = posix_spawn(&id_, "/proc/self/exe", &actions, nullptr, pointers.data(), environ);
        posix_spawn_file_actions_destroy(&actions);
        close(toChild.read);
        close(fromChild.write);
        if (error != 0) throw std::runtime_error("posix_spawn");
    }
    ~Process() {
        Kill();
        close(output_);
    }
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;

    bool ReadByte(char& byte) const { return read(output_, &byte, 1) == 1; }

    void Write(const std::string& text) const {
        if (write(input_, text.data(), text.size()) != static_cast<ssize_t>(text.size())) {
            throw std::runtime_error("write to a child");
        }
    }

    int Finish() {
        CloseInput();
        int status = 0;
        while (id_ != 0 && waitpid(id_, &status, 0) < 0 && errno == EINTR) continue;
        id_ = 0;
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

    void Kill() {
        if (id_ != 0) kill(id_, SIGKILL);
        Finish();
    }

  private:
    void CloseInput() {
        if (input_ >= 0) close(input_);
        input_ = -1;
    }

    pid_t id_ = 0;
    int input_ = -1;
    int output_ = -1;
};

Child::Child(const std::string& role, const Arguments& arguments) {
    Arguments all = {"test", "--role", role};
    all.insert(all.end(), arguments.begin(), arguments.end());
    process_ = std::make_unique<Process>(std::move(all));
}
Child::~Child() = default;
Child::Child(Child&&) noexcept = default;

std::string Child::ReadLine() {
    std::string line;
    for (char byte = 0; process_->ReadByte(byte) && byte != '\n';) line += byte;
    return line;
}

void Child::WriteLine(const std::string& line) {
    process_->Write(line + "\n");
}
int Child::Finish() {
    return process_->Finish();
}
void Child::Kill() {
    process_->Kill();
}

}  // namespace support
