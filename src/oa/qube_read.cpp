// Planes and spectra of qubes.
#include "base/file.h"
#include "base/transpose.h"
#include "oa/binrep.h"
#include "oa/qube.h"
#include "oa/qube_bands.h"
#include "oa/qube_layout.h"
#include "oa/strided_reader.h"

#include <algorithm>
#include <memory>

namespace {

constexpr const char *reader_name = "OaReadQube";

// Reads items of one type and size.
struct ItemReader {
    std::string type;
    int64_t bytes;
    OdlTree label;  // of one native sample
    std::unique_ptr<StridedReader> reader;
};

long long shown(int64_t number) {
    return static_cast<long long>(number);
}

}  // namespace

struct OaQube {
    OaQubeKeywords keywords;
    std::string file_name;
    int64_t start = 0;       // byte of the file
    int64_t bytes_held = 0;  // from there on
    QubeLayout layout;
    OaStreamPtr stream;
    std::vector<ItemReader> readers;
    QubeBandGroup bands;

    int place_of(OaQubeAxis axis) const {
        return static_cast<int>(std::find(keywords.order.begin(), keywords.order.end(), axis) - keywords.order.begin());
    }
};

namespace {

// --- What is where --------------------------------------------------------------------------------------------------

struct ImageAxes {
    OaQubeAxis samples;
    OaQubeAxis lines;
};
constexpr ImageAxes image_axes(OaQubeAxis across) {
    switch (across) {
        case OA_SAMPLE_AXIS:
            return {OA_LINE_AXIS, OA_BAND_AXIS};
        case OA_LINE_AXIS:
            return {OA_SAMPLE_AXIS, OA_BAND_AXIS};
        default:
            return {OA_SAMPLE_AXIS, OA_LINE_AXIS};
    }
}

SampleLayout layout_of(const OaQube &qube, const OaQubePlane &plane, int64_t item_bytes) {
    const int place = qube.place_of(plane.axis);
    const QubePlaneLayout layout = plane.is_suffix ? suffix_plane_layout(qube.layout, place, plane.number - 1)
                                                   : core_plane_layout(qube.layout, place, plane.number - 1);
    const ImageAxes axes = image_axes(plane.axis);
    const auto stride = [&](OaQubeAxis axis) { return layout.stride[static_cast<size_t>(qube.place_of(axis))]; };
    return {layout.first, stride(axes.lines), stride(axes.samples), item_bytes};
}

bool check_rectangle(const OaQube &qube, const OaQubePlane &plane, const SampleRectangle &rectangle,
                     const SampleLayout &layout) {
    const int64_t end =
        layout.position(rectangle.line + rectangle.lines - 1, rectangle.sample + rectangle.samples - 1) +
        layout.sample_bytes;
    if (end <= qube.bytes_held)
        return true;
    OaReportFailure(502,
                    "%s: the part of %s%s plane %lld ends with byte %lld of the qube, which takes %lld; %s holds %lld "
                    "from its byte %lld on.",
                    reader_name, OaQubeAxisName(plane.axis), plane.is_suffix ? " suffix" : "", shown(plane.number),
                    shown(end), shown(qube.layout.total), qube.file_name.c_str(), shown(qube.bytes_held),
                    shown(qube.start) + 1);
    return false;
}

// --- Reading --------------------------------------------------------------------------------------------------------

OdlTree sample_label(const OaQubeItem &item, int64_t lines, int64_t samples) {
    OdlTree label(OdlNewObjDesc("IMAGE", nullptr, nullptr, nullptr, nullptr, nullptr, 0, 0));
    OaLongtoKwdValue("LINES", label.get(), lines);
    OaLongtoKwdValue("LINE_SAMPLES", label.get(), samples);
    OaLongtoKwdValue("SAMPLE_BITS", label.get(), item.bytes * 8);
    OaStrtoKwdValue("SAMPLE_TYPE", label.get(), item.type.c_str());
    return label;
}

// Null after reporting.
ItemReader *reader_of(OaQube *qube, const OaQubeItem &item, const OaQubePlane &plane) {
    if (OaQubeNumberKind(item) == OaNumberKind::None || (plane.is_suffix && item.bytes > qube->keywords.suffix_bytes)) {
        const std::string prefix = plane.is_suffix ? std::string(OaQubeAxisName(plane.axis)) + "_SUFFIX" : "CORE";
        OaReportFailure(520, "%s: %s_ITEM_TYPE = %s with %s_ITEM_BYTES = %lld (SUFFIX_BYTES = %lld) is not supported.",
                        reader_name, prefix.c_str(), item.type.c_str(), prefix.c_str(), shown(item.bytes),
                        shown(qube->keywords.suffix_bytes));
        return nullptr;
    }
    for (ItemReader &known : qube->readers)
        if (known.type == item.type && known.bytes == item.bytes)
            return &known;
    const OdlTree label = sample_label(item, 1, 1);
    OaImageKeywords image;
    image.sample_bits = item.bytes * 8;
    SamplePlan plan;
    if (!make_sample_plan(reader_name, label.get(), image, OA_BINARY, &plan))
        return nullptr;
    ItemReader reader = {item.type, item.bytes, std::move(plan.label), nullptr};
    reader.reader = std::make_unique<StridedReader>(reader_name, std::move(plan), qube->stream.get());
    return &qube->readers.emplace_back(std::move(reader));
}

OaPtr<uint8_t> new_samples(int64_t bytes) {
    OaPtr<uint8_t> samples(static_cast<uint8_t *>(OaMalloc(static_cast<size_t>(bytes))));
    if (!samples)
        OaReportFailure(720, "%s: no memory for %lld bytes of samples.", reader_name, shown(bytes));
    return samples;
}

bool read_into(StridedReader *reader, const SampleLayout &layout, const SampleRectangle &rectangle, uint8_t *out) {
    ShortRead missing;
    if (!reader->read(layout, rectangle, out, &missing))
        return false;
    if (missing.bytes_read == missing.bytes_wanted)
        return true;
    OaReportFailure(700, "%s: the file became shorter: %lld of %lld bytes were read.", reader_name,
                    shown(missing.bytes_read), shown(missing.bytes_wanted));
    return false;
}

// Part of a plane, its lines and samples in the order of the file.
struct FilePart {
    SampleLayout layout;
    SampleRectangle rectangle;
    bool is_turned = false;  // lines and samples of the image are exchanged
};

FilePart in_file_order(const SampleLayout &layout, const SampleRectangle &part) {
    if (part.lines == 1 || part.samples == 1 || layout.sample_stride <= layout.line_stride)
        return {layout, part, false};
    return {{layout.first, layout.sample_stride, layout.line_stride, layout.sample_bytes},
            {part.sample, part.samples, part.line, part.lines},
            true};
}

// Whether a part of a core band is at hand among its neighbours.
bool prepare_neighbours(OaQube *qube, const OaQubePlane &plane, const StridedReader &reader, const FilePart &part) {
    const int band_place = qube->place_of(OA_BAND_AXIS);
    if (plane.axis != OA_BAND_AXIS || plane.is_suffix || band_place == 2)
        return false;
    const int64_t stride = band_place == 0 ? qube->layout.core_bytes : qube->layout.core_line;
    const int64_t band = plane.number - 1;
    const SampleRectangle &rectangle = part.rectangle;
    const int64_t end =
        part.layout.position(rectangle.line + rectangle.lines - 1, rectangle.sample + rectangle.samples - 1) +
        part.layout.sample_bytes;
    const int64_t behind = (qube->start + qube->bytes_held - end) / stride;
    QubeBandLayout layout = {part.layout, stride, std::min(qube->keywords.core_items[OA_BAND_AXIS], band + 1 + behind),
                             band_place == 0};
    layout.band_0.first -= band * stride;
    return qube->bands.prepare(reader, layout, rectangle, band);
}

template <typename T>
void turn_rows(const uint8_t *rows, const SampleRectangle &read, uint8_t *out, int64_t out_stride) {
    constexpr int64_t block = 512 / int64_t{sizeof(T)};  // samples, whose rows stay in the first caches
    const UtilTransposition<T> turn = {rows, read.samples * int64_t{sizeof(T)}, out, out_stride};
    for (int64_t line = 0; line < read.lines; line += block)
        for (int64_t sample = 0; sample < read.samples; sample += block)
            turn.turn(line, std::min(line + block, read.lines), sample, std::min(sample + block, read.samples));
}

// The part's samples as the image has them; `give` reads some of the lines in the order of the file. Null after
// reporting.
template <typename Give>
OaPtr<uint8_t> collect_samples(const FilePart &part, int64_t sample_size, Give give) {
    constexpr int64_t strip_bytes = int64_t{1} << 16;
    constexpr int64_t least_lines = 64;
    const SampleRectangle &rectangle = part.rectangle;
    OaPtr<uint8_t> samples = new_samples(rectangle.area() * sample_size);
    if (!part.is_turned)
        return samples && give(rectangle, samples.get()) ? std::move(samples) : nullptr;
    const int64_t line_bytes = rectangle.samples * sample_size;
    const int64_t lines = std::min(rectangle.lines, std::max(least_lines, strip_bytes / line_bytes));
    const OaPtr<uint8_t> strip = samples ? new_samples(lines * line_bytes) : nullptr;
    if (!strip)
        return nullptr;
    const auto turn = sample_size == 1   ? turn_rows<uint8_t>
                      : sample_size == 2 ? turn_rows<uint16_t>
                      : sample_size == 4 ? turn_rows<uint32_t>
                                         : turn_rows<uint64_t>;
    for (int64_t line = 0; line < rectangle.lines; line += lines) {
        const SampleRectangle read = {rectangle.line + line, std::min(lines, rectangle.lines - line), rectangle.sample,
                                      rectangle.samples};
        if (!give(read, strip.get()))
            return nullptr;
        turn(strip.get(), read, samples.get() + line * sample_size, rectangle.lines * sample_size);
    }
    return samples;
}

// Null after reporting.
OaPtr<uint8_t> read_samples(OaQube *qube, const OaQubePlane &plane, StridedReader *reader, const SampleLayout &layout,
                            const SampleRectangle &rectangle) {
    const FilePart part = in_file_order(layout, rectangle);
    const bool at_hand = prepare_neighbours(qube, plane, *reader, part);
    return collect_samples(part, reader->sample_size(), [&](const SampleRectangle &lines, uint8_t *out) {
        if (!at_hand)
            return read_into(reader, part.layout, lines, out);
        qube->bands.give(*reader, lines, plane.number - 1, out);
        return true;
    });
}

OaObject *as_object(const ItemReader &reader, const SampleRectangle &part, OaPtr<uint8_t> samples) {
    OdlTree label(OaCopyTree(reader.label.get(), OA_COPY_LABEL));
    OaLongtoKwdValue("LINES", label.get(), part.lines);
    OaLongtoKwdValue("LINE_SAMPLES", label.get(), part.samples);
    OaLongtoKwdValue("FIRST_LINE", label.get(), part.line + 1);
    OaLongtoKwdValue("FIRST_SAMPLE", label.get(), part.sample + 1);
    return OaNewOaObject(label.release(), samples.release(), part.area() * reader.reader->sample_size());
}

}  // namespace

OaQubeExtent OaQubePlaneExtent(const OaQubeKeywords &qube, OaQubeAxis axis) {
    const ImageAxes axes = image_axes(axis);
    return {qube.core_items[axes.lines], qube.core_items[axes.samples]};
}

OaQube *OaOpenQube(const ObjDesc *qube_node) {
    auto qube = std::make_unique<OaQube>();
    OaFileKeywords file;
    if (OaGetQubeKeywords(qube_node, &qube->keywords) != 0 || OaGetFileKeywords(qube_node, &file) != 0)
        return nullptr;
    if (file.record_type == OA_VARIABLE_LENGTH || file.interchange_format != OA_BINARY) {
        OaReportFailure(520,
                        "%s: qubes in variable-length records or with INTERCHANGE_FORMAT = ASCII are not supported.",
                        __func__);
        return nullptr;
    }
    qube->stream = open_samples(__func__, file.file_name);
    if (!qube->stream)
        return nullptr;
    qube->file_name = file.file_name;
    qube->start = file.start;
    qube->bytes_held = std::max<int64_t>(0, util_file_size(qube->stream->file.get()) - file.start);
    qube->layout = choose_qube_layout(qube->keywords, qube->bytes_held);
    return reader_of(qube.get(), qube->keywords.core, OaQubePlane()) ? qube.release() : nullptr;
}

OaQube *OaCloseQube(OaQube *qube) {
    delete qube;
    return nullptr;
}

const OaQubeKeywords &OaKeywordsOfQube(const OaQube *qube) {
    return qube->keywords;
}

const OaQubeItem *OaItemOfPlane(const OaQube *qube, const OaQubePlane &plane) {
    const OaQubeKeywords &keywords = qube->keywords;
    const int64_t items = plane.is_suffix ? keywords.suffixes[plane.axis].items : keywords.core_items[plane.axis];
    if (plane.number < 1 || plane.number > items)
        return nullptr;
    return plane.is_suffix ? &OaQubeSuffixItem(keywords, plane.axis, plane.number - 1) : &keywords.core;
}

OaObject *OaReadQubePlane(OaQube *qube, const OaQubePlane &plane) {
    const OaQubeExtent extent = OaQubePlaneExtent(qube->keywords, plane.axis);
    return OaReadQubePart(qube, plane, 1, extent.lines, 1, extent.samples);
}

OaObject *OaReadQubePart(OaQube *qube, const OaQubePlane &plane, int64_t start_line, int64_t stop_line,
                         int64_t start_sample, int64_t stop_sample) {
    const OaQubeItem *item = OaItemOfPlane(qube, plane);
    const OaQubeExtent extent = OaQubePlaneExtent(qube->keywords, plane.axis);
    if (!item || start_line < 1 || stop_line < start_line || stop_line > extent.lines || start_sample < 1 ||
        stop_sample < start_sample || stop_sample > extent.samples) {
        OaReportFailure(502, "%s: there are no lines %lld to %lld, samples %lld to %lld in %s%s plane %lld.", __func__,
                        shown(start_line), shown(stop_line), shown(start_sample), shown(stop_sample),
                        OaQubeAxisName(plane.axis), plane.is_suffix ? " suffix" : "", shown(plane.number));
        return nullptr;
    }
    const ItemReader *reader = reader_of(qube, *item, plane);
    if (!reader)
        return nullptr;
    const SampleRectangle part = {start_line - 1, stop_line - start_line + 1, start_sample - 1,
                                  stop_sample - start_sample + 1};
    SampleLayout layout = layout_of(*qube, plane, item->bytes);
    if (!check_rectangle(*qube, plane, part, layout))
        return nullptr;
    layout.first += qube->start;
    OalResetBinrepErrors();
    OaPtr<uint8_t> samples = read_samples(qube, plane, reader->reader.get(), layout, part);
    if (!samples)
        return nullptr;
    OalReportBinrepErrors(__func__);
    return as_object(*reader, part, std::move(samples));
}

OaObject *OaReadQubeSpectrum(OaQube *qube, int64_t line, int64_t sample) {
    const OaQubeKeywords &keywords = qube->keywords;
    if (line < 1 || line > keywords.core_items[OA_LINE_AXIS] || sample < 1 ||
        sample > keywords.core_items[OA_SAMPLE_AXIS]) {
        OaReportFailure(502, "%s: there is no line %lld, sample %lld in the qube.", __func__, shown(line),
                        shown(sample));
        return nullptr;
    }
    // A column of the plane across SAMPLE: its bands are the lines of that image.
    const OaObjectPtr column(
        OaReadQubePart(qube, {OA_SAMPLE_AXIS, sample, false}, 1, keywords.core_items[OA_BAND_AXIS], line, line));
    if (!column)
        return nullptr;
    OaObject *spectrum = OaNewOaObject(column->odl, column->data, column->size);
    column->odl = nullptr;
    column->data = nullptr;
    OaLongtoKwdValue("LINES", spectrum->odl, 1);
    OaLongtoKwdValue("LINE_SAMPLES", spectrum->odl, keywords.core_items[OA_BAND_AXIS]);
    OaLongtoKwdValue("FIRST_LINE", spectrum->odl, 1);
    OaLongtoKwdValue("FIRST_SAMPLE", spectrum->odl, 1);
    return spectrum;
}
