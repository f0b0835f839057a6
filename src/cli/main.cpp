#include "cli/commands.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <string_view>

namespace {

constexpr const char *general_help =
    "usage: lumacart-cli COMMAND [ARGUMENT...]\n"
    "\n"
    "  label FILE   check the label of a product and list its objects\n"
    "  image FILE   describe an image or a band of a qube, write its samples or its picture\n"
    "  qube FILE    describe a qube, write its bands, suffix planes and spectra\n"
    "  table FILE   describe the tables of a product, write rows as CSV, sum up a column\n"
    "  fits-label FILE\n"
    "               make the label that a simple FITS file lacks\n"
    "\n"
    "  --help       this text; COMMAND --help tells about one command\n"
    "  --version    the program's version\n";

constexpr const char *label_help =
    "usage: lumacart-cli label FILE\n"
    "\n"
    "Checks the label in FILE, or beside it under the same name with the extension lbl or LBL. Messages about the "
    "label\n"
    "go to standard error; the objects go to standard output, a line each: line, level, name and class.\n"
    "\n"
    "Exit status: 0 nothing to tell, 1 messages were written, 2 there is no label that can be read.\n";

constexpr const char *image_help =
    "usage: lumacart-cli image FILE [OPTION...]\n"
    "\n"
    "Reads an image, or a band of a qube, of the product whose label is in FILE, or beside it under the same name "
    "with\n"
    "the extension lbl or LBL, and prints one line:\n"
    "\n"
    "  LINES SAMPLES BITS TYPE MINIMUM MAXIMUM\n"
    "\n"
    "of the part read; BITS and TYPE as in memory, MINIMUM and MAXIMUM over its finite samples (- where there are "
    "none\n"
    "or the type has no numbers). Bands of qubes are given as stored where values stand for themselves, else as "
    "physical\n"
    "values in 32-bit reals; special values and those below the valid minimum are left out of the range and have level "
    "0\n"
    "in the picture.\n"
    "\n"
    "  --object NAME   the first object of that class or NAME; * stands for any text (default: what the viewer\n"
    "                  shows, the first of class QUBE or one that ends so, else of class IMAGE or one that ends so)\n"
    "  --band N        band, from 1 (default: 1)\n"
    "  --lines A:B     lines A to B, from 1 (default: all)\n"
    "  --samples A:B   samples A to B of each line, from 1 (default: all)\n"
    "  --raw OUT       write the samples as they are in memory, row after row\n"
    "  --png OUT       write the picture that the viewer shows, turned as the label directs\n"
    "\n"
    "Exit status: 0 done, 1 done with messages (such as a file that ends early), 2 failed; OUT is then as it was.\n";

constexpr const char *qube_help =
    "usage: lumacart-cli qube FILE [OPTION...]\n"
    "\n"
    "Describes the qube of the product whose label is in FILE, or beside it under the same name with the extension lbl "
    "or\n"
    "LBL: axes, core and special values, the planes that stand behind the core along each axis, and the bands with "
    "their\n"
    "centres as far as the label tells them. Otherwise it writes one band, suffix plane or spectrum:\n"
    "\n"
    "  --band N        band, from 1\n"
    "  --suffix NAME   suffix plane, by the name in the description, letter case aside, or as 'SAMPLE suffix 2'\n"
    "  --raw OUT       write its samples as they are in memory, row after row\n"
    "  --png OUT       write its picture\n"
    "  --spectrum SAMPLE,LINE[,BOX]\n"
    "                  all bands at a sample and line, from 1; of a BOX of 3 or 5 the means of the valid values\n"
    "  --csv OUT       write the spectrum as BAND,CENTER,VALUE, lines ended by CR LF; - is standard output\n"
    "  --object NAME   the first object of that class or NAME; * stands for any text (default: the first of class QUBE "
    "or\n"
    "                  one that ends so)\n"
    "\n"
    "Bands and suffix planes are told, written and scaled as by lumacart-cli image. Where there is no data a spectrum "
    "has\n"
    "the name of what stands there, such as NULL.\n"
    "\n"
    "Exit status: 0 done, 1 done with messages (such as a file that ends early), 2 failed; OUT is then as it was.\n";

constexpr const char *table_help =
    "usage: lumacart-cli table FILE [OPTION...]\n"
    "\n"
    "Describes the tables of the product whose label is in FILE, or beside it under the same name with the extension "
    "lbl\n"
    "or LBL, and numbers the columns of each: repetitions of containers and items as NAME_k, a column with bit columns "
    "as\n"
    "these. With --csv or --summary it works on one table.\n"
    "\n"
    "  --object NAME    the first table of that class or NAME; * stands for any text (default: the first one)\n"
    "  --csv OUT        write rows as comma-separated values, names first, lines ended by CR LF; - is standard "
    "output\n"
    "  --rows A:B       rows A to B, from 1 (default: all)\n"
    "  --columns A:B    columns A to B, from 1 (default: all)\n"
    "  --columns NAME,...\n"
    "                   columns by name, in that order; * stands for any text\n"
    "  --scaled         apply SCALING_FACTOR and OFFSET (default: values as stored)\n"
    "  --summary NAME   minimum, maximum and average of a column, or how often each of its values occurs\n"
    "\n"
    "Exit status: 0 done, 1 done with messages (such as fewer rows than ROWS), 2 failed; OUT is then as it was.\n";

constexpr const char *fits_label_help =
    "usage: lumacart-cli fits-label FILE [--out LABEL]\n"
    "\n"
    "Prints a label that describes the primary array of a FITS file as an image. The array has two axes and is of "
    "bytes\n"
    "(BITPIX 8) or of reals (-32, -64). The label names the file without its folder: keep the two together.\n"
    "\n"
    "  --out LABEL  write the label into this file instead; one that is there is replaced once the new one is "
    "complete\n"
    "\n"
    "Exit status: 0 done, 1 the label was written into another folder than the file's, 2 no label can be made.\n";

struct Command {
    std::string_view name;
    int (*run)(std::span<char *const> arguments);
    const char *help;
};
constexpr Command commands[] = {
    {"label", run_label, label_help},
    {"image", run_image, image_help},
    {"qube", run_qube, qube_help},
    {"table", run_table, table_help},
    {"fits-label", run_fits_label, fits_label_help},
};

// False, after saying so, when what was printed did not all reach its place.
bool output_is_complete() {
    if (fflush(stdout) == 0 && !ferror(stdout))
        return true;
    fail("standard output cannot be written");
    return false;
}

int print(const char *text) {
    fputs(text, stdout);
    return exit_done;
}

bool asks_for_help(std::span<char *const> arguments) {
    for (const std::string_view argument : arguments) {
        if (argument == "--")
            return false;
        if (argument == "--help")
            return true;
    }
    return false;
}

int run(std::span<char *const> arguments) {
    if (arguments.empty()) {
        fputs(general_help, stderr);
        return exit_failed;
    }
    const std::string_view name = arguments.front();
    if (name == "--help")
        return print(general_help);
    if (name == "--version")
        return print("lumacart-cli " LUMACART_VERSION "\n");
    for (const Command &command : commands) {
        if (name == command.name)
            return asks_for_help(arguments.subspan(1)) ? print(command.help) : command.run(arguments.subspan(1));
    }
    return fail("unknown command " + std::string(name) + "; see lumacart-cli --help");
}

}  // namespace

int fail(const std::string &text) {
    fprintf(stderr, "lumacart-cli: %s\n", text.c_str());
    return exit_failed;
}

std::string open_failure() {
    return errno == EINVAL ? "Not a regular file" : strerror(errno);
}

int main(int argc, char **argv) {
    signal(SIGXFSZ, SIG_IGN);  // a file beyond the user's limit is a write that fails
    const int status = run({argv + 1, static_cast<size_t>(argc > 0 ? argc - 1 : 0)});
    return output_is_complete() ? status : exit_failed;
}
