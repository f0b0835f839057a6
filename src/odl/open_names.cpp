#include "odl/open_names.h"

#include <algorithm>
#include <cstring>

namespace {

constexpr size_t most_looked_through = 32;

// Length and both ends of a name: enough to tell most names apart without a look at their texts.
uint64_t key_of(std::string_view name) {
    const size_t count = std::min(name.size(), sizeof(uint64_t));
    uint64_t head = 0;
    uint64_t tail = 0;
    memcpy(&head, name.data(), count);
    memcpy(&tail, name.data() + name.size() - count, count);
    constexpr uint64_t odd = 0x9e3779b97f4a7c15;
    return (head + name.size()) * odd ^ tail;
}

}  // namespace

void odl::OpenNames::close_object() {
    names_.resize(objects_.back().first_name);
    objects_.pop_back();
}

bool odl::OpenNames::contains(std::string_view name) const {
    const Object &object = objects_.back();
    if (object.many_names)
        return object.many_names->contains(name);
    const uint64_t key = key_of(name);
    return std::any_of(names_.begin() + static_cast<ptrdiff_t>(object.first_name), names_.end(),
                       [&](const Name &known) { return known.key == key && known.text == name; });
}

void odl::OpenNames::add(std::string_view name) {
    Object &object = objects_.back();
    if (object.many_names) {
        object.many_names->insert(name);
        return;
    }
    names_.push_back({key_of(name), name});
    if (names_.size() - object.first_name <= most_looked_through)
        return;
    object.many_names = std::make_unique<std::unordered_set<std::string_view>>();
    for (size_t i = object.first_name; i < names_.size(); ++i)
        object.many_names->insert(names_[i].text);
    names_.resize(object.first_name);
}
