#include "decoders/external.h"

#include "base/text.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <iterator>
#include <spawn.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace {

constexpr auto between_looks = std::chrono::milliseconds(10);
constexpr int ending_signals[] = {SIGHUP, SIGINT, SIGTERM};

// How the program begins: in a group of its own, with default signals and none of our files.
class Start {
  public:
    Start() {
        posix_spawn_file_actions_init(&files_);
        posix_spawn_file_actions_addopen(&files_, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
        posix_spawn_file_actions_adddup2(&files_, STDERR_FILENO, STDOUT_FILENO);
        posix_spawn_file_actions_addclosefrom_np(&files_, STDERR_FILENO + 1);
        sigset_t none, all;
        sigemptyset(&none);
        sigfillset(&all);
        posix_spawnattr_init(&attributes_);
        posix_spawnattr_setflags(&attributes_, POSIX_SPAWN_SETPGROUP | POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK);
        posix_spawnattr_setpgroup(&attributes_, 0);
        posix_spawnattr_setsigmask(&attributes_, &none);
        posix_spawnattr_setsigdefault(&attributes_, &all);
    }
    ~Start() {
        posix_spawnattr_destroy(&attributes_);
        posix_spawn_file_actions_destroy(&files_);
    }
    Start(const Start &) = delete;
    Start &operator=(const Start &) = delete;

    int run(const std::string &program, const std::vector<std::string> &arguments, pid_t *process) const {
        std::vector<char *> texts = {const_cast<char *>(program.c_str())};
        for (const std::string &argument : arguments)
            texts.push_back(const_cast<char *>(argument.c_str()));
        texts.push_back(nullptr);
        return posix_spawn(process, program.c_str(), &files_, &attributes_, texts.data(), environ);
    }

  private:
    posix_spawn_file_actions_t files_;
    posix_spawnattr_t attributes_;
};

// Processes leave no status for a program that was started with their ends ignored, nor can it wait for one.
class HeededEnds {
  public:
    HeededEnds() {
        sigaction(SIGCHLD, nullptr, &before_);
        if (ignores())
            signal(SIGCHLD, SIG_DFL);
    }
    ~HeededEnds() {
        if (ignores())
            sigaction(SIGCHLD, &before_, nullptr);
    }
    HeededEnds(const HeededEnds &) = delete;
    HeededEnds &operator=(const HeededEnds &) = delete;

  private:
    bool ignores() const { return !(before_.sa_flags & SA_SIGINFO) && before_.sa_handler == SIG_IGN; }

    struct sigaction before_ = {};
};

// Whether a signal waits that would end this program.
bool is_interrupted() {
    sigset_t waiting;
    sigpending(&waiting);
    return std::any_of(std::begin(ending_signals), std::end(ending_signals),
                       [&](int number) { return sigismember(&waiting, number) == 1; });
}

// Whether the process ends in time; it is not yet reaped then, so that its number stays its own.
bool ends_in_time(pid_t process, int limit_seconds) {
    const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(limit_seconds);
    while (std::chrono::steady_clock::now() < limit && !is_interrupted()) {
        siginfo_t info = {};
        if (waitid(P_PID, static_cast<id_t>(process), &info, WEXITED | WNOHANG | WNOWAIT) == 0 &&
            info.si_pid == process)
            return true;
        std::this_thread::sleep_for(between_looks);
    }
    return false;
}

}  // namespace

std::string run_external_decoder(const std::string &program, const std::vector<std::string> &arguments,
                                 int limit_seconds) {
    if (!program.starts_with('/'))
        return util_format("the decoder %s is not named by its full path", program.c_str());
    const HeededEnds heeded;
    pid_t process = 0;
    if (const int code = Start().run(program, arguments, &process); code != 0)
        return util_format("couldn't run the decoder %s: %s", program.c_str(), strerror(code));
    const bool ended = ends_in_time(process, limit_seconds);
    kill(-process, SIGKILL);
    int status = 0;
    while (waitpid(process, &status, 0) < 0 && errno == EINTR) {
    }
    if (!ended && is_interrupted())
        return util_format("the decoder %s was interrupted", program.c_str());
    if (!ended)
        return util_format("the decoder %s did not end within %d seconds", program.c_str(), limit_seconds);
    if (WIFSIGNALED(status))
        return util_format("the decoder %s was ended by signal %d", program.c_str(), WTERMSIG(status));
    if (WEXITSTATUS(status) != 0)
        return util_format("the decoder %s ended with status %d", program.c_str(), WEXITSTATUS(status));
    return "";
}

DecoderFolder::DecoderFolder() {
    sigset_t held;
    sigemptyset(&held);
    for (const int number : ending_signals) {
        struct sigaction action = {};
        sigaction(number, nullptr, &action);
        if ((action.sa_flags & SA_SIGINFO) || action.sa_handler != SIG_IGN)
            sigaddset(&held, number);
    }
    pthread_sigmask(SIG_BLOCK, &held, &signals_before_);
    const char *parent = getenv("TMPDIR");
    std::string pattern = std::string(parent && *parent == '/' ? parent : "/tmp") + "/lumacart-XXXXXX";
    if (mkdtemp(pattern.data()))
        path_ = pattern;
}

DecoderFolder::~DecoderFolder() {
    if (is_there()) {
        std::error_code ignored;  // a decoder may have left other files there
        std::filesystem::remove_all(path_, ignored);
    }
    pthread_sigmask(SIG_SETMASK, &signals_before_, nullptr);
}
