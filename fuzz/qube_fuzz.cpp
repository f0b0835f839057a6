// The input is a QUBE object in label language, a zero byte, and the bytes of the data file, behind which the file goes
// on with many zeros if their number is odd: bands that are large enough are read several at a time. Planes, parts of
// them and spectra are read; they must agree.
#include "base/notice.h"
#include "base/text.h"
#include "data_file.h"
#include "oa/qube.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>

namespace {

constexpr int64_t more_bytes = int64_t{1} << 19;

// The plane's last line, read by itself, and the value of its last sample.
void compare(OaQube *qube, const OaQubePlane &plane, const OaObject *whole) {
    const OaQubeExtent extent = OaQubePlaneExtent(OaKeywordsOfQube(qube), plane.axis);
    const OaQubeItem *item = OaItemOfPlane(qube, plane);
    require(item && whole->size == extent.lines * extent.samples * item->bytes);
    const int64_t first = extent.samples / 2 + 1;
    const OaObjectPtr part(OaReadQubePart(qube, plane, extent.lines, extent.lines, first, extent.samples));
    require(part && part->size == (extent.samples - first + 1) * item->bytes);
    const char *end = static_cast<const char *>(whole->data) + whole->size;
    require(memcmp(end - part->size, part->data, static_cast<size_t>(part->size)) == 0);
    const OaQubeValue value = OaQubeValueOf(*item, end - item->bytes);
    float physical = 0;
    OaQubePhysicalValues(*item, end - item->bytes, 1, &physical);
    require((value.state == OA_QUBE_VALID) == (physical == physical));
}

void read_planes(OaQube *qube) {
    const OaQubeKeywords &keywords = OaKeywordsOfQube(qube);
    for (const OaQubeAxis axis : {OA_SAMPLE_AXIS, OA_LINE_AXIS, OA_BAND_AXIS}) {
        for (const bool is_suffix : {false, true}) {
            const int64_t items = is_suffix ? keywords.suffixes[axis].items : keywords.core_items[axis];
            for (const int64_t number : {int64_t{0}, int64_t{1}, int64_t{2}, int64_t{3}, items, items + 1}) {
                const OaQubePlane plane = {axis, number, is_suffix};
                const OaObjectPtr whole(OaReadQubePlane(qube, plane));
                require(!whole || (number >= 1 && number <= items));
                if (whole)
                    compare(qube, plane, whole.get());
            }
        }
    }
    const OaObjectPtr first(OaReadQubeSpectrum(qube, 1, 1));
    const OaObjectPtr last(
        OaReadQubeSpectrum(qube, keywords.core_items[OA_LINE_AXIS], keywords.core_items[OA_SAMPLE_AXIS]));
    require(!last || first);
    require(!last || last->size == keywords.core_items[OA_BAND_AXIS] * keywords.core.bytes);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    static FILE *const nowhere = fopen("/dev/null", "w");
    Oa_message_fptr = nowhere;
    util_set_notice_hook([](NoticeKind, const std::string &) {});
    const std::string_view input(reinterpret_cast<const char *>(data), size);
    const size_t label_end = std::min(input.find('\0'), input.size());
    const std::string_view bytes = input.substr(std::min(label_end + 1, input.size()));
    const DataFile file(bytes);
    if (bytes.size() % 2 == 1)
        require(truncate(file.path().c_str(), more_bytes) == 0);
    const std::string label =
        util_format("^QUBE = (\"%s\", 1)\n", file.path().c_str()) + std::string(input.substr(0, label_end)) + "\nEND\n";
    const OdlTree tree(OdlParseLabelString(label.c_str(), nullptr, 0, 1));
    const ObjDesc *node = tree ? OdlFindObjDesc(tree.get(), "QUBE", nullptr, nullptr, 1, SCOPE_TO_END) : nullptr;
    if (const OaQubePtr qube(node ? OaOpenQube(node) : nullptr); qube)
        read_planes(qube.get());
    return 0;
}
