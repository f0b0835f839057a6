// The quick label test.
#include "base/file.h"
#include "base/text.h"
#include "browse/model/browse_state.h"

#include <array>
#include <string_view>

namespace {

constexpr size_t probe_bytes = 3000;
constexpr size_t statement_bytes = 81;  // within fewer from its start a statement has its "=" and its value

// Where `part` begins, counted from the first `keyword`, behind `from` bytes of that; npos when it is not there.
size_t distance(std::string_view text, std::string_view part, size_t from) {
    return from == std::string_view::npos ? from : text.find(part, from);
}

bool has_assignment(std::string_view text, std::string_view keyword) {
    const size_t start = text.find(keyword);
    return start != std::string_view::npos && distance(text.substr(start), "=", 0) < statement_bytes;
}

bool has_version(std::string_view text) {
    const size_t start = text.find("KRV_VERSION_ID");
    if (start == std::string_view::npos)
        return false;
    const std::string_view statement = text.substr(start);
    return distance(statement, "KRV3", distance(statement, "=", 0)) < statement_bytes;
}

}  // namespace

int avalidate_label(const std::string &path) {
    if (util_contains(path, ".lbl") || util_contains(path, ".LBL"))
        return 1;
    const FilePtr file = util_open_regular(path.c_str());
    if (!file)
        return -1;
    std::array<char, probe_bytes> bytes;
    const std::string_view text(bytes.data(), fread(bytes.data(), 1, bytes.size(), file.get()));
    return has_version(text) || has_assignment(text, "OBJECT") || has_assignment(text, "RECORD_TYPE") ? 1 : 0;
}
