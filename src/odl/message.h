// Where a parse's messages go, and how its checks report.
#pragma once

#include "odl/odl.h"

#include <string>

namespace odl {

// The message channel and the line that a check speaks about.
struct MessagePlace {
    const char *file_name = nullptr;
    FILE *handle = nullptr;
    long line = 0;

    // Sets odl_errno to `code` and issues the message. Returns false, a failed check's answer.
    bool report(int code, const std::string &text) const;
};

// A message destination that is opened once for many messages. Not for interleaving with another writer of that file.
class MessageFile {
  public:
    MessageFile(const char *file_name, FILE *handle);
    ~MessageFile();
    MessageFile(const MessageFile &) = delete;
    MessageFile &operator=(const MessageFile &) = delete;

    FILE *handle() const { return destination_; }
    MessagePlace at(long line) const { return {nullptr, destination_, line}; }

  private:
    FILE *destination_;
    bool is_own_;
};

}  // namespace odl
