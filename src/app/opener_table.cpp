#include "app/opener_table.h"

#include <array>

namespace {

constexpr std::array rows = {
    ProductOpener{"*IMAGE", has_several_bands, open_bands, nullptr},
    ProductOpener{"IMAGE", nullptr, open_image, nullptr},
    ProductOpener{"*IMAGE", nullptr, open_image, nullptr},
};

}  // namespace

std::span<const ProductOpener> lumacart_openers() {
    return rows;
}
