// Runs of the command-line tool, the real program.
#pragma once

#include "base/text.h"
#include "support/scratch.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <sys/wait.h>
#include <vector>

// For the shell; no path here holds a quote.
inline std::string quoted(const std::string &word) {
    return util_format("'%s'", word.c_str());
}

struct Outcome {
    int status = -1;
    std::string out;
    std::string err;
};

inline Outcome run_command(const std::string &command) {
    const ScratchFolder scratch;
    const std::string out = scratch.file("out");
    const std::string err = scratch.file("err");
    const int result =
        std::system(("{ " + command + "; } >" + quoted(out) + " 2>" + quoted(err) + " </dev/null").c_str());
    return {WIFEXITED(result) ? WEXITSTATUS(result) : -1, read_file(out), read_file(err)};
}

inline std::string cli_command(const std::vector<std::string> &arguments) {
    std::string command = quoted(LUMACART_CLI);
    for (const std::string &argument : arguments)
        command.append(" ").append(quoted(argument));
    return command;
}

inline Outcome run_cli(const std::vector<std::string> &arguments) {
    return run_command(cli_command(arguments));
}

// `err` is part of the report; empty: nothing is reported.
inline void expect_run(const std::vector<std::string> &arguments, int status, const std::string &out,
                       const std::string &err) {
    const Outcome outcome = run_cli(arguments);
    EXPECT_EQ(outcome.status, status) << outcome.err;
    EXPECT_EQ(outcome.out, out) << err;
    EXPECT_EQ(outcome.err.empty(), err.empty()) << outcome.err;
    EXPECT_NE(outcome.err.find(err), std::string::npos) << outcome.err;
}
