#include "oa/object_read.h"

#include "base/notice.h"
#include "base/text.h"
#include "oa/binrep.h"
#include "oa/sdt.h"

#include <algorithm>
#include <cstring>
#include <string>

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
    ObjDesc *leaf;           // null at the end of the data
    int64_t bytes_read = 0;  // of all runs
};

enum class Progress { goes_on, ended, failed };

Progress convert(Conversion *conversion, const uint8_t *bytes, int64_t count) {
    conversion->bytes_read += count;
    if (OalProcessSDT(bytes, count, &conversion->leaf) == 0)
        return Progress::goes_on;
    if (!conversion->leaf)
        return Progress::ended;
    OaReportFailure(oa_errno, "%s: ProcessSDT returned error.", conversion->routine);
    return Progress::failed;
}

// One run after the other, each in pieces.
Progress convert_apart(Conversion *conversion, const ByteRuns &runs) {
    std::vector<uint8_t> piece(static_cast<size_t>(std::min(piece_bytes, runs.bytes)));
    for (int64_t run = 0; run < runs.count; ++run) {
        for (int64_t at = 0; at < runs.bytes;) {
            const int64_t wanted = std::min(piece_bytes, runs.bytes - at);
            const int64_t held = conversion->source->read(runs.first + run * runs.stride + at, wanted, piece.data());
            if (held < 0)
                return Progress::failed;
            const Progress progress = convert(conversion, piece.data(), held);
            if (progress != Progress::goes_on)
                return progress;
            if (held < wanted)
                return Progress::ended;
            at += held;
        }
    }
    return Progress::goes_on;
}

// Many runs with a read, and what lies between them.
Progress convert_together(Conversion *conversion, const ByteRuns &runs) {
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
            return Progress::ended;
    }
    return Progress::goes_on;
}

// False after reporting.
bool convert_runs(Conversion *conversion, const std::vector<ByteRuns> &all_runs) {
    for (ByteRuns runs : all_runs) {
        if (!conversion->leaf || runs.count < 1 || runs.bytes < 1)
            continue;
        if (runs.count == 1 || runs.stride == runs.bytes)
            runs = {runs.first, runs.bytes * runs.count, runs.bytes * runs.count, 1};  // one long run
        const bool together =
            runs.count > 1 && runs.stride - runs.bytes <= least_seek_bytes && runs.stride <= piece_bytes;
        const Progress progress = together ? convert_together(conversion, runs) : convert_apart(conversion, runs);
        if (progress != Progress::goes_on)
            return progress != Progress::failed;
    }
    return true;
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

// Of all runs; -1 when that is no size.
int64_t total_bytes(const std::vector<ByteRuns> &all_runs) {
    int64_t total = 0;
    for (const ByteRuns &runs : all_runs) {
        int64_t bytes = 0;
        if (__builtin_mul_overflow(runs.bytes, runs.count, &bytes) || __builtin_add_overflow(total, bytes, &total))
            return -1;
    }
    return total;
}

bool ends_within(const std::vector<ByteRuns> &all_runs, int64_t held) {
    return std::all_of(all_runs.begin(), all_runs.end(), [held](const ByteRuns &runs) {
        return runs.first + (runs.count - 1) * runs.stride + runs.bytes <= held;
    });
}

// Whether the file can be meant by what is wanted of it; reports otherwise.
bool check_claim(const char *routine, const ObjDesc *label, int64_t wanted, int64_t result_bytes, int64_t held) {
    if (held > 0 && wanted >= 0 && (wanted - 1) / largest_claim < held && result_bytes >= 0 &&
        (result_bytes - 1) / (largest_claim * largest_growth) < held)
        return true;
    OaReportFailure(502, "%s: %lld bytes of a %s are wanted, which become %lld; from its begin on the file holds %lld.",
                    routine, static_cast<long long>(wanted), label->class_name, static_cast<long long>(result_bytes),
                    static_cast<long long>(held));
    return false;
}

OaInterchangeFormat result_format(OaInterchangeFormat src_format) {
    return static_cast<OaInterchangeFormat>(src_format == OA_ASCII ? Oa_profile.dst_format_for_ascii
                                                                   : Oa_profile.dst_format_for_binary);
}

void tell_short_read(const Conversion &conversion, const std::vector<ByteRuns> &runs, int64_t first_row) {
    std::string text =
        util_format("Bytes read: %lld.\nBytes attempted to be read: %lld",
                    static_cast<long long>(conversion.bytes_read), static_cast<long long>(total_bytes(runs)));
    if (first_row > 0) {
        const int64_t row = first_row + conversion.bytes_read / runs[0].bytes;
        text += util_format("\nrow = %lld", static_cast<long long>(row));
    }
    util_notice(NoticeKind::Error, text);
}

// Converts all runs, or as many bytes as the file holds of them. False after reporting.
bool fill_buffer(const char *routine, const ObjDesc *sdt, ObjectBytes *source, const std::vector<ByteRuns> &runs,
                 int64_t first_row, uint8_t *buffer, int64_t size) {
    // Folded runs of items could not tell which item is cut.
    const bool whole = ends_within(runs, source->held());
    const OaSdt plan(whole ? OalCompressSDT(sdt) : OaCopyTree(sdt, OA_COPY_SDT));
    Conversion conversion = {routine, source, OalInitializeSDT(plan.get(), buffer, size)};
    const bool has_data = conversion.leaf != nullptr;
    OalResetBinrepErrors();
    if (!convert_runs(&conversion, runs))
        return false;
    OalReportBinrepErrors(routine);
    if (has_data && conversion.leaf) {
        clear_cut_item(conversion.leaf);
        tell_short_read(conversion, runs, first_row);
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
                    const std::vector<ByteRuns> &runs, int64_t first_row) {
    OaSdt sdt(label.release());
    if (!OalCreateSDT(sdt.get(), src_format))
        return nullptr;
    const int64_t size = OalSlotOf(sdt.get()) ? OalDestinationSize(sdt.get()) : -1;
    if (!check_claim(routine, sdt.get(), total_bytes(runs), size, source->held()))
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
    if (!fill_buffer(routine, sdt.get(), source, runs, first_row, buffer.get(), size))
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
    if (!OalCreateSDT(measured.get(), file.interchange_format))
        return nullptr;
    const int64_t bytes = OalSourceSize(measured.get());
    return read_runs(routine, copy_data_label(node), file.interchange_format, &source, {{0, bytes, bytes, 1}}, 0);
}
