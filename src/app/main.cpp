// The viewer's composition root: joins the modules and hands control to the windowing layer.
#include "app/command_table.h"
#include "app/opener_table.h"
#include "base/memory.h"
#include "gui/gui.h"
#include "viewer/viewer.h"

#include <cstdio>
#include <new>
#include <string_view>

namespace {

constexpr char usage[] =
    "Usage: lumacart [FILE]\n"
    "Shows a planetary-science archive product: a label, a data file with its label attached,\n"
    "or a data file whose label stands beside it. Without FILE, choose one with File > Open.\n"
    "\n"
    "  --help     this text\n"
    "  --version  the version\n"
    "\n"
    "lumacart-cli does the same work without a window.\n";

// `argc` counts the windowing layer's own argument, the last.
int run(int argc, char **argv) {
    const std::string_view first = argc >= 3 ? argv[1] : "";
    if (first == "--help" || first == "-h") {
        fputs(usage, stdout);
        return 0;
    }
    if (first == "--version") {
        puts("lumacart " LUMACART_VERSION);
        return 0;
    }
    set_command_table(lumacart_commands());
    set_product_openers(lumacart_openers());
    return start_viewer(argc, argv);
}

}  // namespace

int main(int argc, char **argv) {
    std::set_new_handler(OaOutOfMemory);
    return gui_main(argc, argv, run);
}
