#include "support/home.h"
#include "support/system.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <iterator>
#include <stdexcept>

#include <fcntl.h>
#include <pthread.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

namespace support {

Process StartSelf(const Arguments& arguments) {
    int toChild[2], fromChild[2];
    if (pipe2(toChild, O_CLOEXEC) != 0 || pipe2(fromChild, O_CLOEXEC) != 0) throw std::runtime_error("pipe2");
    std::vector<char*> pointers;
    for (const std::string& argument : arguments) pointers.push_back(const_cast<char*>(argument.c_str()));
    pointers.push_back(nullptr);

    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, toChild[0], STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&actions, fromChild[1], STDOUT_FILENO);
    pid_t id = 0;
    const int error = posix_spawn(&id, "/proc/self/exe", &actions, nullptr, pointers.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    close(toChild[0]);
    close(fromChild[1]);
    if (error != 0) throw std::runtime_error("posix_spawn");
    return {id, toChild[1], fromChild[0]};
}

int WaitFor(std::intptr_t id) {
    int status = 0;
    while (waitpid(static_cast<pid_t>(id), &status, 0) < 0 && errno == EINTR) continue;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

void KillProcess(std::intptr_t id) {
    kill(static_cast<pid_t>(id), SIGKILL);
}

void RunWithLittle(const std::function<void()>& body) {
    rlimit before{};
    getrlimit(RLIMIT_NOFILE, &before);
    const rlimit few{64, before.rlim_max};
    setrlimit(RLIMIT_NOFILE, &few);
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setstacksize(&attributes, 160 * 1024);
    const auto start = [](void* run) -> void* {
        (*static_cast<const std::function<void()>*>(run))();
        return nullptr;
    };
    pthread_t thread{};
    const int error = pthread_create(&thread, &attributes, start, const_cast<std::function<void()>*>(&body));
    pthread_attr_destroy(&attributes);
    if (error == 0) pthread_join(thread, nullptr);
    setrlimit(RLIMIT_NOFILE, &before);
    if (error != 0) throw std::runtime_error("pthread_create");
}

void SetVariable(const std::string& name, const char* value) {
    value == nullptr ? unsetenv(name.c_str()) : setenv(name.c_str(), value, 1);
}

constexpr uid_t nobody = 65534;
WithoutElevation::WithoutElevation() {
    static_cast<void>(getuid() == 0 && seteuid(nobody) == 0);
}
WithoutElevation::~WithoutElevation() {
    static_cast<void>(seteuid(getuid()));
}

std::filesystem::path ProgramFolder() {
    return std::filesystem::read_symlink("/proc/self/exe").parent_path();
}

std::size_t OpenHandles() {
    const std::filesystem::directory_iterator descriptors("/proc/self/fd");
    return static_cast<std::size_t>(std::distance(begin(descriptors), end(descriptors)));
}

}  // namespace support
