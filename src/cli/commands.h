// What lumacart-cli can do. Results go to standard output, everything else to standard error.
#pragma once

#include <span>
#include <string>

enum ExitStatus {
    exit_done = 0,
    exit_with_messages = 1,  // done, but there was something to tell
    exit_failed = 2,
};

// `arguments`: the words behind the command's name.
int run_label(std::span<char *const> arguments);
int run_image(std::span<char *const> arguments);
int run_qube(std::span<char *const> arguments);
int run_table(std::span<char *const> arguments);
int run_fits_label(std::span<char *const> arguments);

// Writes "lumacart-cli: text" to standard error and returns exit_failed.
int fail(const std::string &text);

// What errno says after a file that must be a regular one was opened.
std::string open_failure();
