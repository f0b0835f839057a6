// The input is a GIF file: it is scanned, and every image and colour table that the tree names is looked up and
// decoded.
#include "base/notice.h"
#include "oa/oa.h"

#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>
#include <sys/mman.h>
#include <unistd.h>

namespace {

constexpr int64_t most_pixels = int64_t{1} << 22;  // of one image, and decoded of one input

void require(bool holds) {
    if (!holds)
        abort();
}

int64_t number_of(const ObjDesc *node, const char *name) {
    int64_t value = 0;
    require(OaKwdValuetoLong(name, node, &value) == 0);
    return value;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    const std::string_view bytes(reinterpret_cast<const char *>(data), size);
    if (!bytes.starts_with("GIF87a") && !bytes.starts_with("GIF89a"))
        return -1;  // a label
    static FILE *const nowhere = fopen("/dev/null", "w");
    Oa_message_fptr = nowhere;
    util_set_notice_hook([](NoticeKind, const std::string &) {});
    const int file = memfd_create("gif", MFD_CLOEXEC);
    require(file >= 0 && write(file, data, size) == static_cast<ssize_t>(size));
    const std::string path = "/proc/self/fd/" + std::to_string(file);
    const OdlTree tree(OaParseLabelFile(path.c_str(), nullptr, 0, 1));
    int64_t pixels = 0;
    for (ObjDesc *node = tree ? tree->first_child : nullptr; node && pixels < most_pixels; node = node->right_sibling) {
        OaFileKeywords place;
        require(OaGetFileKeywords(node, &place) == 0 && place.start < static_cast<int64_t>(size) + 1);
        if (OaGetObjectClass(node) != OA_IMAGE ||
            number_of(node, "LINES") * number_of(node, "LINE_SAMPLES") > most_pixels)
            continue;
        const OaObjectPtr image(OaReadImage(node, 1));
        require(!image || image->size == number_of(image->odl, "LINES") * number_of(image->odl, "LINE_SAMPLES"));
        pixels += image ? image->size : 0;
    }
    close(file);
    return 0;
}
