#include "oa/oa.h"

#include <bit>

namespace {

constexpr OaProfile default_profile() {
    OaProfile profile;
    profile.data_translation_profile = std::endian::native == std::endian::little ? 2 : 1;
    return profile;
}

}  // namespace

OaProfile Oa_profile = default_profile();
