#include "odl/open_names.h"

#include <algorithm>

namespace {

constexpr size_t most_looked_through = 32;

}  // namespace

void odl::OpenNames::close_object() {
    names_.resize(objects_.back().first_name);
    objects_.pop_back();
}

bool odl::OpenNames::contains(std::string_view name) const {
    const Object &object = objects_.back();
    if (object.many_names)
        return object.many_names->contains(name);
    return std::find(names_.begin() + static_cast<ptrdiff_t>(object.first_name), names_.end(), name) != names_.end();
}

void odl::OpenNames::add(std::string_view name) {
    Object &object = objects_.back();
    if (object.many_names) {
        object.many_names->insert(name);
        return;
    }
    names_.push_back(name);
    if (names_.size() - object.first_name <= most_looked_through)
        return;
    object.many_names = std::make_unique<std::unordered_set<std::string_view>>(
        names_.begin() + static_cast<ptrdiff_t>(object.first_name), names_.end());
    names_.resize(object.first_name);
}
