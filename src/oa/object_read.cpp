#include "oa/object_read.h"

#include "base/notice.h"
#include "base/text.h"
#include "oa/binrep.h"
#include "oa/sdt.h"

#include <algorithm>
#include <cstring>
#include <vector>

namespace {

constexpr int64_t piece_bytes = int64_t{1} << 18;       // read and converted at a time: stays in a core's cache
constexpr int64_t least_seek_bytes = int64_t{1} << 12;  // up to here reading on costs less than seeking
constexpr int64_t largest_claim = 16;                   // times the bytes that the file holds
// Times its stored size that an object becomes: digits of a bit, columns of a number. A label that asks for more wants
// our memory, not its data.
constexpr int64_t largest_growth = 16;

// The plan being run, and how far it came.
struct Conversion {
    const char *routine;
    ObjectBytes *source;
    ByteRuns runs;
    ObjDesc *leaf;           // null at the end of the data
    int64_t bytes_read = 0;  // of the runs
};

enum class Progress { goes_on, finished, failed };

Progress convert(Conversion *conversion, const uint8_t *bytes, int64_t count) {
    conversion->bytes_read += count;
    if (OalProcessSDT(bytes, count, &conversion->leaf) == 0)
        return Progress::goes_on;
    if (!conversion->leaf)
        return Progress::finished;
    OaReportFailure(oa_errno, "%s: ProcessSDT returned error.", conversion->routine);
    return Progress::failed;
}

// One run after the other, each in pieces.
Progress convert_apart(Conversion *conversion) {
    const ByteRuns &runs = conversion->runs;
    std::vector<uint8_t> piece(static_cast<size_t>(std::min(piece_bytes, runs.bytes)));
    for (int64_t run = 0; run < runs.count; ++run) {
        for (int64_t at = 0; at < runs.bytes;) {
            const int64_t wanted = std::min(piece_bytes, runs.bytes - at);
            const int64_t held = conversion->source->read(runs.first + run * runs.stride + at, wanted, piece.data());
            if (held < 0)
                return Progress::failed;
            const Progress progress = convert(conversion, piece.data(), held);
            if (progress != Progress::goes_on || held < wanted)
                return progress;
            at += held;
        }
    }
    return Progress::finished;
}

// Many runs with a read, and what lies between them.
Progress convert_together(Conversion *conversion) {
    const ByteRuns &runs = conversion->runs;
    const int64_t most = std::min(runs.count, piece_bytes / runs.stride);
    std::vector<uint8_t> piece(static_cast<size_t>(most * runs.stride));
    for (int64_t run = 0; run < runs.count; run += most) {
        const int64_t count = std::min(most, runs.count - run);
        const int64_t wanted = (count - 1) * runs.stride + runs.bytes;
        const int64_t held = conversion->source->read(runs.first + run * runs.stride, wanted, piece.data());
        if (held < 0)
            return Progress::failed;
        for (int64_t at = 0; at < held; at += runs.stride) {
            const Progress progress = convert(conversion, piece.data() + at, std::min(runs.bytes, held - at));
            if (progress != Progress::goes_on)
                return progress;
        }
        if (held < wanted)
            break;
    }
    return Progress::finished;
}

bool run_conversion(Conversion *conversion) {
    ByteRuns &runs = conversion->runs;
    if (!conversion->leaf || runs.count < 1 || runs.bytes < 1)
        return true;
    if (runs.count == 1 || runs.stride == runs.bytes)
        runs = {runs.first, runs.bytes * runs.count, runs.bytes * runs.count, 1};  // one long run
    const bool together = runs.count > 1 && runs.stride - runs.bytes <= least_seek_bytes && runs.stride <= piece_bytes;
    return (together ? convert_together(conversion) : convert_apart(conversion)) != Progress::failed;
}

// The bytes of an item that the file cuts off are no value; of a text they are what there is.
void clear_cut_item(const ObjDesc *leaf) {
    OaSlot *slot = OalSlotOf(leaf);
    if (slot->conversion_type != OA_COPY || slot->src.progress < 1 || !slot->dst.data)
        return;
    switch (slot->dst.data_type) {
        case OA_CHARACTER:
        case OA_DATE:
        case OA_TIME:
        case OA_ASCII_INTEGER:
        case OA_ASCII_REAL:
        case OA_ASCII_COMPLEX:
            return;
        default:
            memset(slot->dst.data, 0, static_cast<size_t>(slot->src.progress));
    }
}

int64_t bytes_of(const ByteRuns &runs) {
    int64_t bytes = 0;
    return __builtin_mul_overflow(runs.bytes, runs.count, &bytes) ? -1 : bytes;
}

// Whether the file can be meant by what is wanted of it; reports otherwise.
bool check_claim(const char *routine, const ObjDesc *label, const ByteRuns &runs, int64_t result_bytes, int64_t held) {
    const int64_t wanted = bytes_of(runs);
    if (held > 0 && wanted >= 0 && (wanted - 1) / largest_claim < held && result_bytes >= 0 &&
        (result_bytes - 1) / (largest_claim * largest_growth) < held)
        return true;
    OaReportFailure(502,
                    "%s: %lld x %lld bytes of a %s, which become %lld, are wanted; the file holds %lld from its begin "
                    "on.",
                    routine, static_cast<long long>(runs.count), static_cast<long long>(runs.bytes), label->class_name,
                    static_cast<long long>(result_bytes), static_cast<long long>(held));
    return false;
}

OaInterchangeFormat result_format(OaInterchangeFormat src_format) {
    return static_cast<OaInterchangeFormat>(src_format == OA_ASCII ? Oa_profile.dst_format_for_ascii
                                                                   : Oa_profile.dst_format_for_binary);
}

void tell_short_read(const Conversion &conversion, const ByteRuns &runs, const char *run_name) {
    std::string text =
        util_format("Bytes read: %lld.\nBytes attempted to be read: %lld",
                    static_cast<long long>(conversion.bytes_read), static_cast<long long>(bytes_of(runs)));
    if (runs.count > 1)
        text += util_format("\n%s = %lld", run_name, static_cast<long long>(conversion.bytes_read / runs.bytes + 1));
    util_notice(NoticeKind::Error, text);
}

// Whether the object's bytes were read, all or as far as the file holds them.
bool fill_buffer(const char *routine, const ObjDesc *sdt, ObjectBytes *source, const ByteRuns &runs,
                 const char *run_name, uint8_t *buffer, int64_t size) {
    const int64_t end = runs.first + (runs.count - 1) * runs.stride + runs.bytes;
    // Folded runs of items cannot tell which item is cut.
    const bool whole = end <= source->held();
    const OaSdt plan(whole ? OalCompressSDT(sdt) : OaCopyTree(sdt, OA_COPY_SDT));
    Conversion conversion = {routine, source, runs, OalInitializeSDT(plan.get(), buffer, size)};
    const bool has_data = conversion.leaf != nullptr;
    OalResetBinrepErrors();
    if (!run_conversion(&conversion))
        return false;
    OalReportBinrepErrors(routine);
    if (has_data && conversion.leaf) {
        clear_cut_item(conversion.leaf);
        tell_short_read(conversion, runs, run_name);
    }
    return true;
}

bool describes_data(const ObjDesc *node) {
    return !node->is_a_group && OaGetObjectClass(node) != OA_UNKNOWN_CLASS;
}

ObjDesc *next_beyond(ObjDesc *node, const ObjDesc *top) {
    while (node != top && !node->right_sibling)
        node = node->parent;
    return node == top ? nullptr : node->right_sibling;
}

}  // namespace

OaObject *read_runs(const char *routine, OdlTree label, OaInterchangeFormat src_format, ObjectBytes *source,
                    const ByteRuns &runs, const char *run_name) {
    OaSdt sdt(label.release());
    if (!OalCreateSDT(sdt.get(), src_format)) {
        OaReportFailure(oa_errno, "%s: CreateSDT returned error.", routine);
        return nullptr;
    }
    const int64_t size = OalSlotOf(sdt.get()) ? OalDestinationSize(sdt.get()) : -1;
    if (!check_claim(routine, sdt.get(), runs, size, source->held()))
        return nullptr;
    OaPtr<uint8_t> buffer(static_cast<uint8_t *>(OaZeroedMalloc(static_cast<size_t>(size))));
    if (!buffer) {
        OaReportFailure(720, "%s: OaMalloc failed to allocate %lld bytes for output buffer.", routine,
                        static_cast<long long>(size));
        return nullptr;
    }
    const OaInterchangeFormat dst_format = result_format(src_format);
    if (dst_format == OA_ASCII)
        memset(buffer.get(), ' ', static_cast<size_t>(size));
    if (!fill_buffer(routine, sdt.get(), source, runs, run_name, buffer.get(), size))
        return nullptr;
    OalSDTtoODLTree(sdt.get(), dst_format);
    return OaNewOaObject(sdt.release(), buffer.release(), size);
}

OdlTree copy_data_label(const ObjDesc *node) {
    OdlTree copy(OaCopyTree(node, OA_COPY_LABEL));
    for (ObjDesc *at = copy->first_child; at;) {
        ObjDesc *next = next_beyond(at, copy.get());
        if (describes_data(at))
            next = at->first_child ? at->first_child : next;
        else
            OdlFreeTree(OdlCutObjDesc(at));
        at = next;
    }
    return copy;
}

OaObject *read_described_object(const char *routine, const ObjDesc *node) {
    if (OaCheckODLTree(node) != 0) {
        OaReportFailure(501, "%s: the object's label tree is missing or broken.", routine);
        return nullptr;
    }
    OaFileKeywords file;
    ObjectBytes source;
    if (OaGetFileKeywords(node, &file) != 0 || !source.open(routine, file))
        return nullptr;
    // The plan tells how many bytes the object has.
    const OaSdt measured(copy_data_label(node).release());
    if (!OalCreateSDT(measured.get(), file.interchange_format) || !OalSlotOf(measured.get())) {
        OaReportFailure(oa_errno, "%s: CreateSDT returned error.", routine);
        return nullptr;
    }
    const int64_t bytes = OalSourceSize(measured.get());
    return read_runs(routine, copy_data_label(node), file.interchange_format, &source, {0, bytes, bytes, 1}, "");
}
