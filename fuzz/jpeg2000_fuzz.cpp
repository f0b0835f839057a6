// The input is a JPEG 2000 file: its label tree is made, and its first components are read by a part and whole.
#include "base/notice.h"
#include "data_file.h"
#include "oa/jpeg2000.h"
#include "oa/signatures.h"

#include <algorithm>

namespace {

constexpr int64_t most_samples = int64_t{1} << 18;  // of what is decoded
constexpr int64_t most_read = 4;                    // components

void read_part(const ObjDesc *node, const Jpeg2000Image &image, int64_t band, OaComponentSize size, int64_t last_line,
               int64_t last_sample) {
    const int64_t first_line = last_line / 2 + 1;
    const int64_t first_sample = last_sample / 2 + 1;
    const OaObjectPtr part(
        OaReadJpeg2000Part(node, image, band, size, first_line, last_line, first_sample, last_sample));
    const int64_t bytes = image.components[static_cast<size_t>(band) - 1].sample_bytes();
    require(!part || part->size == (last_line - first_line + 1) * (last_sample - first_sample + 1) * bytes);
}

void read_band(const ObjDesc *node, const Jpeg2000Image &image, int64_t band) {
    const Jpeg2000Component &component = image.components[static_cast<size_t>(band) - 1];
    read_part(node, image, band, OA_OWN_SIZE, std::min<int64_t>(component.lines, 300),
              std::min<int64_t>(component.line_samples, 300));
    if (image.lines() > most_samples / image.line_samples())
        return;
    read_part(node, image, band, OA_IMAGE_SIZE, image.lines(), image.line_samples());
    const OaObjectPtr whole(OaReadJpeg2000Image(node, band));
    require(!whole || whole->size == image.lines() * image.line_samples() * component.sample_bytes());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    const std::string_view bytes(reinterpret_cast<const char *>(data), size);
    if (!is_jpeg2000(bytes))
        return -1;  // a label
    static FILE *const nowhere = fopen("/dev/null", "w");
    Oa_message_fptr = nowhere;
    util_set_notice_hook([](NoticeKind, const std::string &) {});
    const DataFile file(bytes);
    const OdlTree tree(OaParseLabelFile(file.path().c_str(), nullptr, 0, 1));
    const ObjDesc *node = tree ? tree->first_child : nullptr;
    Jpeg2000Image image;
    require(!node || (OaIsJpeg2000Image(node) && OaOpenJpeg2000(node, &image) == 0));
    const auto bands = static_cast<int64_t>(image.components.size());
    for (int64_t band = 1; node && band <= std::min(bands, most_read); ++band)
        read_band(node, image, band);
    return 0;
}
