#include "base/file.h"
#include "cli/arguments.h"
#include "cli/commands.h"
#include "viewer/model/fits_label.h"

#include <filesystem>

namespace {

namespace fs = std::filesystem;

void print_lines(const std::vector<std::string> &lines, FILE *stream) {
    for (const std::string &line : lines)
        fprintf(stream, "%s\n", line.c_str());
}

// The folder that a file is or will be in, behind links.
fs::path folder_of(const std::string &file) {
    std::error_code failure;
    return fs::weakly_canonical(fs::absolute(file, failure), failure).parent_path();
}

int write_label(const std::vector<std::string> &label, const std::string &path, const std::string &fits_file) {
    std::error_code none;
    if (fs::equivalent(path, fits_file, none))
        return fail(path + " is the FITS file itself");
    ReplacingFile file;
    if (!file.open(path))
        return fail(path + ": " + open_failure());
    print_lines(label, file.stream());
    if (!file.commit())
        return fail(path + ": " + open_failure());
    if (folder_of(path) == folder_of(fits_file))
        return exit_done;
    fail(path + " names the FITS file without its folder; keep the two together");
    return exit_with_messages;
}

}  // namespace

int run_fits_label(std::span<char *const> arguments) {
    std::string file;
    std::optional<std::string> out;
    const Option options[] = {{"--out", &out}};
    const std::string mistake = take_arguments(arguments, options, &file);
    if (!mistake.empty())
        return fail(mistake);
    std::vector<std::string> label;
    const std::string reason = make_fits_label(file, &label);
    if (!reason.empty())
        return fail(file + ": " + reason);
    if (out)
        return write_label(label, *out, file);
    print_lines(label, stdout);
    return exit_done;
}
