// The keyword names of the objects that are open during a parse, for the check of duplicates.
#pragma once

#include <cstddef>
#include <memory>
#include <string_view>
#include <unordered_set>
#include <vector>

namespace odl {

// Objects open and close like brackets, so the names of all of them stand on one stack. Those of an object with few
// keywords are looked through; one with many gets a hash set. The views must live until their object is closed.
class OpenNames {
  public:
    OpenNames() { open_object(); }

    void open_object() { objects_.push_back({names_.size(), nullptr}); }
    void close_object();
    // Whether the innermost object has a keyword of that name.
    bool contains(std::string_view name) const;
    void add(std::string_view name);

  private:
    struct Object {
        size_t first_name;
        std::unique_ptr<std::unordered_set<std::string_view>> many_names;
    };

    std::vector<std::string_view> names_;
    std::vector<Object> objects_;
};

}  // namespace odl
