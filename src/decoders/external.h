// Decoders that are programs of their own, named by the user.
#pragma once

#include <csignal>
#include <string>
#include <vector>

constexpr int external_decoder_seconds = 120;

// Runs a program, given by its absolute path, without a shell: the arguments as they are, nothing to read on its
// standard input, what it prints on standard error. Waits until it ends, `limit_seconds` at most; then it is ended with
// everything that it started. Empty when it ended well, else what went wrong.
std::string run_external_decoder(const std::string &program, const std::vector<std::string> &arguments,
                                 int limit_seconds = external_decoder_seconds);

// A folder that nobody else can read or write, for one file; removed with whatever was made in it. While it is
// there, signals that would end this program wait; they end a decoder, and the program when the folder is gone.
class DecoderFolder {
  public:
    DecoderFolder();
    ~DecoderFolder();
    DecoderFolder(const DecoderFolder &) = delete;
    DecoderFolder &operator=(const DecoderFolder &) = delete;

    bool is_there() const { return !path_.empty(); }
    std::string file() const { return path_ + "/output"; }

  private:
    std::string path_;
    sigset_t signals_before_;
};
