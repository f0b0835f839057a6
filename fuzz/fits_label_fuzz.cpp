// The input is a FITS file: its header is read, and the label that is made of it is parsed again.
#include "base/notice.h"
#include "oa/oa.h"
#include "viewer/model/fits_label.h"

#include <cstdlib>
#include <sys/mman.h>
#include <unistd.h>

namespace {

void require(bool holds) {
    if (!holds)
        abort();
}

int64_t number_of(const ObjDesc *node, const char *name) {
    int64_t value = 0;
    require(OaKwdValuetoLong(name, node, &value) == 0);
    return value;
}

FILE *file_of(const std::string &bytes) {
    const int file = memfd_create("fits", MFD_CLOEXEC);
    require(file >= 0 && write(file, bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size()));
    require(lseek(file, 0, SEEK_SET) == 0);
    return fdopen(file, "rb");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    util_set_notice_hook([](NoticeKind, const std::string &) {});
    FILE *fits = file_of({reinterpret_cast<const char *>(data), size});
    FitsHeader header;
    const std::string reason = read_fits_header(fits, &header);
    fclose(fits);
    if (!reason.empty())
        return 0;
    require(header.byte_offset > 1 && header.byte_offset <= 1 + 2880 * most_header_blocks && header.file_records > 0);

    std::string text;
    for (const std::string &line : build_krv_label(header, "name with blanks.fits"))
        text += line + "\n";
    FILE *label = file_of(text);
    const std::string path = "/proc/self/fd/" + std::to_string(fileno(label));
    const OdlTree tree(OaParseLabelFile(path.c_str(), nullptr, 0, 1));
    fclose(label);
    const ObjDesc *image = tree ? OdlFindObjDesc(tree.get(), "IMAGE", nullptr, nullptr, 1, SCOPE_TO_END) : nullptr;
    require(image && number_of(image, "LINES") == header.lines && number_of(image, "LINE_SAMPLES") == header.samples);
    return 0;
}
