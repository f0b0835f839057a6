#include "base/file.h"

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

FilePtr util_open_regular(const char *path) {
    // O_NONBLOCK keeps the open itself from waiting on a pipe that nobody writes; on regular files it has no effect.
    const int descriptor = open(path, O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
    if (descriptor < 0)
        return nullptr;
    struct stat status;
    if (fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode)) {
        const int reason = S_ISDIR(status.st_mode) ? EISDIR : EINVAL;
        close(descriptor);
        errno = reason;
        return nullptr;
    }
    FilePtr file(fdopen(descriptor, "rb"));
    if (!file)
        close(descriptor);
    return file;
}

int64_t util_file_size(FILE *file) {
    struct stat status;
    return fstat(fileno(file), &status) == 0 ? static_cast<int64_t>(status.st_size) : -1;
}

ReplacingFile::~ReplacingFile() {
    discard();
}

bool ReplacingFile::open(const std::string &path) {
    discard();
    target_ = path;
    if (char *resolved = realpath(path.c_str(), nullptr)) {
        target_ = resolved;
        free(resolved);
    }
    struct stat status;
    const bool replaces = stat(target_.c_str(), &status) == 0;
    // A link that leads nowhere would itself be replaced.
    const int stat_error = errno;
    if (!replaces && lstat(target_.c_str(), &status) == 0) {
        errno = stat_error;
        return false;
    }
    if (replaces && !S_ISREG(status.st_mode)) {
        errno = S_ISDIR(status.st_mode) ? EISDIR : EINVAL;
        return false;
    }
    if (replaces && access(target_.c_str(), W_OK) != 0)
        return false;

    // The name beside the target is short, so that a target of the longest allowed name still has one.
    const size_t slash = target_.rfind('/');
    beside_ = (slash == std::string::npos ? std::string() : target_.substr(0, slash + 1)) + ".lumacart-XXXXXX";
    const int descriptor = mkstemp(beside_.data());
    if (descriptor < 0) {
        beside_.clear();
        return false;
    }
    mode_t mode = status.st_mode & 07777;
    if (!replaces) {
        const mode_t mask = umask(0);
        umask(mask);
        mode = 0666 & ~mask;
    }
    if (fchmod(descriptor, mode) != 0 || (file_ = fdopen(descriptor, "wb")) == nullptr) {
        const int reason = errno;
        close(descriptor);
        discard();
        errno = reason;
        return false;
    }
    return true;
}

bool ReplacingFile::commit() {
    if (!file_)
        return false;
    bool done = ferror(file_) == 0 && fflush(file_) == 0 && fsync(fileno(file_)) == 0;
    int reason = errno;
    if (fclose(file_) != 0 && done) {
        done = false;
        reason = errno;
    }
    file_ = nullptr;
    if (done && rename(beside_.c_str(), target_.c_str()) != 0) {
        done = false;
        reason = errno;
    }
    if (done)
        beside_.clear();
    discard();
    if (!done)
        errno = reason;
    return done;
}

void ReplacingFile::discard() {
    if (file_)
        fclose(file_);
    file_ = nullptr;
    if (!beside_.empty())
        unlink(beside_.c_str());
    beside_.clear();
}
