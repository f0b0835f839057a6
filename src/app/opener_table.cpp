#include "app/opener_table.h"

#include "qubes/qubes.h"
#include "tables/tables.h"

#include <array>

namespace {

constexpr std::array rows = {
    ProductOpener{"QUBE", nullptr, open_qube, nullptr},
    ProductOpener{"*QUBE", nullptr, open_qube, nullptr},
    ProductOpener{"*IMAGE", has_several_bands, open_bands, nullptr},
    ProductOpener{"IMAGE", nullptr, open_image, nullptr},
    ProductOpener{"*IMAGE", nullptr, open_image, nullptr},
    ProductOpener{"*TABLE", nullptr, open_tables, plot_set_up, open_column_browser},
    ProductOpener{"*SERIES", nullptr, open_tables, plot_set_up, open_column_browser},
    ProductOpener{"*SPECTRUM", nullptr, open_tables, plot_set_up, open_column_browser},
    ProductOpener{"*PALETTE", nullptr, open_tables, plot_set_up, open_column_browser},
    ProductOpener{"*GAZETTEER", nullptr, open_tables, plot_set_up, open_column_browser},
    ProductOpener{"INDEX", nullptr, open_tables, plot_set_up, open_column_browser},
    ProductOpener{"SPREADSHEET", nullptr, open_tables, plot_set_up, open_column_browser},
};

}  // namespace

std::span<const ProductOpener> lumacart_openers() {
    return rows;
}
