// Child processes whose end is an event. Commands are bytes: the toolkit's own class would take them for text.
#include "gui/window.h"

#include <QSocketNotifier>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

namespace {

constexpr int held_descriptor = STDERR_FILENO + 1;

std::vector<char *> pointers(const std::vector<std::string> &texts) {
    std::vector<char *> list(texts.size());
    std::transform(texts.begin(), texts.end(), list.begin(),
                   [](const std::string &text) { return const_cast<char *>(text.c_str()); });
    return list;
}

std::vector<char *> environment_with(const std::vector<std::string> &settings) {
    std::vector<char *> list = pointers(settings);
    for (char **variable = environ; *variable; ++variable) {
        const std::string_view text = *variable;
        const std::string_view name = text.substr(0, text.find('=') + 1);
        if (std::none_of(settings.begin(), settings.end(), [&](const auto &other) { return other.starts_with(name); }))
            list.push_back(*variable);
    }
    list.push_back(nullptr);
    return list;
}

// The processes keep one end of a pipe open until the last of them has ended.
class Pipe {
  public:
    Pipe() {
        if (pipe2(ends_, O_CLOEXEC) != 0)
            ends_[0] = ends_[1] = -1;
    }
    ~Pipe() {
        for (const int end : ends_) {
            if (end >= 0)
                close(end);
        }
    }
    Pipe(const Pipe &) = delete;
    Pipe &operator=(const Pipe &) = delete;

    bool is_open() const { return ends_[0] >= 0; }
    int held_end() const { return ends_[1]; }
    int take_watched_end() { return std::exchange(ends_[0], -1); }

  private:
    int ends_[2];
};

// Returns an error number, 0 when the process runs.
int spawn(const std::vector<std::string> &command, const std::string &directory,
          const std::vector<std::string> &settings, int held_end, pid_t *process) {
    posix_spawn_file_actions_t files;
    posix_spawn_file_actions_init(&files);
    posix_spawn_file_actions_addchdir_np(&files, directory.c_str());
    posix_spawn_file_actions_addopen(&files, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_adddup2(&files, held_end, held_descriptor);
    posix_spawn_file_actions_addclosefrom_np(&files, held_descriptor + 1);
    sigset_t none, all;
    sigemptyset(&none);
    sigfillset(&all);
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETPGROUP | POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK);
    posix_spawnattr_setpgroup(&attributes, 0);
    posix_spawnattr_setsigmask(&attributes, &none);
    posix_spawnattr_setsigdefault(&attributes, &all);
    std::vector<char *> arguments = pointers(command);
    arguments.push_back(nullptr);
    const int code = posix_spawn(process, command.front().c_str(), &files, &attributes, arguments.data(),
                                 environment_with(settings).data());
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&files);
    return code;
}

// -1 when a signal ended it, or when it left no status because the program ignores the ends of its children.
int reap(pid_t process) {
    int status = 0;
    pid_t ended = 0;
    do
        ended = waitpid(process, &status, 0);
    while (ended < 0 && errno == EINTR);
    return ended == process && WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

}  // namespace

struct ChildProcess final : QObject {
    ChildProcess(Window *owner, pid_t child, int end)
        : QObject(owner), window(owner), process(child), watched_end(end), notifier(end, QSocketNotifier::Read) {
        connect(&notifier, &QSocketNotifier::activated, this, [this] { tell_end(); });
    }
    ~ChildProcess() override { close(watched_end); }

    void tell_end() {
        notifier.setEnabled(false);
        std::erase(window->processes, this);
        Event event;
        event.type = EventType::ProcessEnded;
        event.process = this;
        event.status = reap(process);
        deleteLater();
        send_event(window, event);
    }

    Window *const window;
    const pid_t process;
    const int watched_end;
    QSocketNotifier notifier;
};

ChildProcess *gui_start_process(Window *window, const std::vector<std::string> &command, const std::string &directory,
                                const std::vector<std::string> &settings) {
    Pipe pipe;
    if (!gui_window_exists(window) || !pipe.is_open())
        return nullptr;
    pid_t process = 0;
    if (const int code = spawn(command, directory, settings, pipe.held_end(), &process); code != 0) {
        errno = code;
        return nullptr;
    }
    auto *child = new ChildProcess(window, process, pipe.take_watched_end());
    window->processes.push_back(child);
    return child;
}

void gui_end_process(ChildProcess *process) {
    // Searched for by address alone: it may have ended.
    for (Window *window : all_windows()) {
        if (std::erase(window->processes, process) == 0)
            continue;
        process->notifier.setEnabled(false);
        kill(-process->process, SIGKILL);
        reap(process->process);
        process->deleteLater();
        return;
    }
}
