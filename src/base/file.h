// Opening files that a user or a label names, and writing files without ever losing what was there.
#pragma once

#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>

struct FileCloser {
    void operator()(FILE *file) const { fclose(file); }
};
using FilePtr = std::unique_ptr<FILE, FileCloser>;

// Opens a regular file (through symbolic links) for reading bytes. Null with errno set when it does not open, is a
// directory (EISDIR) or is anything else that is not a regular file (EINVAL); never waits on a pipe or device.
FilePtr util_open_regular(const char *path);

// Size of an open file in bytes, or -1.
int64_t util_file_size(FILE *file);

// A file that replaces `path` only once it is complete. It is written beside its target and renamed over it by commit;
// without commit it is removed. A symbolic link is followed; permissions of an existing target are kept; its other hard
// links keep the old contents.
class ReplacingFile {
  public:
    ReplacingFile() = default;
    ~ReplacingFile();
    ReplacingFile(const ReplacingFile &) = delete;
    ReplacingFile &operator=(const ReplacingFile &) = delete;

    // False with errno set when no file can be made beside `path`, or `path` is there and not a regular file.
    bool open(const std::string &path);
    FILE *stream() const { return file_; }
    // Flushes to the disk and renames. False with errno set when anything failed; the target is then as it was.
    bool commit();

  private:
    void discard();

    FILE *file_ = nullptr;
    std::string target_;
    std::string beside_;
};
