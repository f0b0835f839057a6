// The input is three bytes (alignment, formats, translation profile), an object in label language, a zero byte, and the
// object's bytes. The plan is made, simplified and run with the bytes in one chunk and in small ones, and turned back
// into a label. All ways of running it must agree.
#include "oa/sdt.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

namespace {

constexpr int64_t largest_output = int64_t{1} << 16;

std::vector<uint8_t> run(ObjDesc *plan, std::string_view source, size_t chunk, int64_t size) {
    std::vector<uint8_t> buffer(static_cast<size_t>(size));
    ObjDesc *leaf = OalInitializeSDT(plan, buffer.data(), size);
    for (size_t at = 0; leaf && at < source.size(); at += chunk) {
        // A block of its own, so that a read past it is seen.
        const std::vector<char> bytes(source.begin() + static_cast<ptrdiff_t>(at),
                                      source.begin() + static_cast<ptrdiff_t>(std::min(at + chunk, source.size())));
        if (OalProcessSDT(bytes.data(), static_cast<int64_t>(bytes.size()), &leaf))
            break;
    }
    return buffer;
}

void fuzz_object(ObjDesc *object, OaInterchangeFormat format, std::string_view source) {
    const OaSdt plan(object);
    if (!OalCreateSDT(plan.get(), format) || !OalSlotOf(plan.get()))
        return;
    const OaSdt compressed(OalCompressSDT(plan.get()));
    const int64_t size = std::clamp<int64_t>(OalDestinationSize(plan.get()), 1, largest_output);
    const std::vector<uint8_t> whole = run(plan.get(), source, source.size() + 1, size);
    const std::vector<uint8_t> compressed_whole = run(compressed.get(), source, source.size() + 1, size);
    for (const size_t chunk : {size_t{1}, size_t{7}, size_t{64}})
        if (run(plan.get(), source, chunk, size) != whole ||
            run(compressed.get(), source, chunk, size) != compressed_whole)
            abort();
    // Of an item that is not all there, or has no room, a copy moves what it can.
    const bool complete =
        static_cast<int64_t>(source.size()) >= OalSourceSize(plan.get()) && size == OalDestinationSize(plan.get());
    if (complete && whole != compressed_whole)
        abort();
    const bool to_ascii =
        (format == OA_ASCII ? Oa_profile.dst_format_for_ascii : Oa_profile.dst_format_for_binary) == 1;
    OalSDTtoODLTree(plan.get(), to_ascii ? OA_ASCII : OA_BINARY);
    for (const ObjDesc *node = plan.get(); node; node = node->first_child)
        if (OalSlotOf(node))
            abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    static FILE *const nowhere = fopen("/dev/null", "w");
    Oa_message_fptr = nowhere;
    if (size < 3)
        return 0;
    Oa_profile = {};
    Oa_profile.dst_alignment_type = data[0] % 4;
    Oa_profile.dst_format_for_ascii = data[1] & 1 ? OA_ASCII : OA_BINARY;
    Oa_profile.dst_format_for_binary = data[1] & 2 ? OA_ASCII : OA_BINARY;
    const OaInterchangeFormat format = data[1] & 4 ? OA_ASCII : OA_BINARY;
    Oa_profile.data_translation_profile = data[2] % 3;
    const std::string_view input(reinterpret_cast<const char *>(data) + 3, size - 3);
    const size_t label_end = std::min(input.find('\0'), input.size());
    const std::string label = std::string(input.substr(0, label_end)) + "\nEND\n";
    const OdlTree tree(OdlParseLabelString(label.c_str(), nullptr, 0, 1));
    if (tree && tree->first_child)
        fuzz_object(OdlCutObjDesc(tree->first_child), format, input.substr(std::min(label_end + 1, input.size())));
    return 0;
}
