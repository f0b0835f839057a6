// Conversions from and to text: FORMATs, and runs of items.
#include "oa/sdt_ascii.h"

#include "base/text.h"
#include "oa/ascii_number.h"
#include "oa/sdt_build.h"
#include "oa/sdt_strided.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <string>
#include <string_view>

namespace {

constexpr const char *routine = "OalDetermineConvertParameters";
constexpr int widest = 500;

std::string format_of(const ObjDesc *node) {
    const char *value = nullptr;
    std::string text = OaKwdValuetoStr("FORMAT", node, &value) == 0 ? util_upper(value) : "";
    const auto is_quote = [](char c) { return c == '"' || c == '\'' || c == ' '; };
    while (!text.empty() && is_quote(text.back()))
        text.pop_back();
    text.erase(0, static_cast<size_t>(std::find_if_not(text.begin(), text.end(), is_quote) - text.begin()));
    return text;
}

// Letter, width, and for reals a point and decimals: "I6", "F8.3". What follows is not looked at.
bool parse_format(std::string_view text, bool real, OaAsciiForm *form) {
    const char *const end = text.data() + text.size();
    if (text.empty() || (real ? text[0] != 'E' && text[0] != 'F' : text[0] != 'I'))
        return false;
    auto [at, error] = std::from_chars(text.data() + 1, end, form->width);
    if (error != std::errc() || form->width < 1 || form->width > widest)
        return false;
    if (!real) {
        form->letter = 'd';
        return true;
    }
    if (at == end || *at != '.' || std::from_chars(at + 1, end, form->digits).ec != std::errc())
        return false;
    form->letter = text[0] == 'E' ? 'e' : 'f';
    return form->digits >= 0 && form->digits <= form->width;
}

int plan_bits(ObjDesc *node, OaSlot *slot) {
    OaAsciiForm &form = slot->ascii_form;
    form.letter = util_contains(format_of(node), "O") ? 'o' : 'X';
    int64_t width = 0;
    if (__builtin_mul_overflow(slot->src.size, form.letter == 'o' ? 3 : 2, &width) ||
        __builtin_add_overflow(width, 1, &slot->dst.size))
        return OalReportTooLarge();
    if (form.letter == 'X')
        OaStrtoKwdValue("FORMAT", node, ("\"X" + std::to_string(width) + "\"").c_str());
    return 0;
}

// --- Runs -----------------------------------------------------------------------------------------------------------

constexpr int64_t batch = 128;  // items on their way through native values

// Puts the text behind a blank, to the right of the field; of a longer text the first characters.
void put_right(std::string_view text, uint8_t *dst, int64_t size) {
    const auto width = static_cast<size_t>(size - 1);
    const size_t length = std::min(text.size(), width);
    memset(dst, ' ', static_cast<size_t>(size) - length);
    memcpy(dst + (static_cast<size_t>(size) - length), text.data(), length);
}

void put_integer(int64_t value, uint8_t *dst, int64_t size) {
    char text[24];
    const char *end = std::to_chars(text, text + sizeof text, value).ptr;
    put_right({text, static_cast<size_t>(end - text)}, dst, size);
}

void put_real(double value, const OaAsciiForm &form, uint8_t *dst, int64_t size) {
    constexpr size_t longest = 1024;  // the largest double with 500 decimals
    char text[longest];
    const auto print = [&](std::chars_format format, int digits) {
        const char *end = std::to_chars(text, text + longest, value, format, digits).ptr;
        return std::string_view(text, static_cast<size_t>(end - text));
    };
    if (form.letter != 'g') {
        put_right(print(form.letter == 'e' ? std::chars_format::scientific : std::chars_format::fixed, form.digits),
                  dst, size);
        return;
    }
    // A default width must not cut: a sign and a long exponent take the room of digits.
    std::string_view printed = print(std::chars_format::general, form.digits);
    for (int digits = form.digits; printed.size() > static_cast<size_t>(form.width) && digits > 1;)
        printed = print(std::chars_format::general, --digits);
    put_right(printed, dst, size);
}

void put_bits(const OaSlot &slot, const uint8_t *src, uint8_t *dst, int64_t count) {
    constexpr char digits[] = "0123456789ABCDEF";
    for (; count > 0; --count) {
        *dst++ = ' ';
        for (int64_t i = 0; i < slot.src.size; ++i) {
            const unsigned byte = *src++;
            if (slot.ascii_form.letter == 'o') {
                *dst++ = static_cast<uint8_t>(digits[byte >> 6]);
                *dst++ = static_cast<uint8_t>(digits[byte >> 3 & 7]);
                *dst++ = static_cast<uint8_t>(digits[byte & 7]);
            } else {
                *dst++ = static_cast<uint8_t>(digits[byte >> 4]);
                *dst++ = static_cast<uint8_t>(digits[byte & 15]);
            }
        }
    }
}

template <typename T>
void write_texts(const OaSlot &slot, const uint8_t *src, uint8_t *dst, int64_t count) {
    T values[batch];
    for (int64_t done = 0; done < count; done += batch) {
        const int64_t items = std::min(batch, count - done);
        BinrepConvertRun(slot.plan, src + done * slot.src.size, values, items);
        for (int64_t i = 0; i < items; ++i) {
            uint8_t *item = dst + (done + i) * slot.dst.size;
            if (slot.ascii_form.letter == 'd')
                put_integer(static_cast<int64_t>(values[i]), item, slot.dst.size);
            else
                put_real(static_cast<double>(values[i]), slot.ascii_form, item, slot.dst.size);
        }
    }
}

template <typename T>
void read_texts(const OaSlot &slot, T (*read)(const uint8_t *, int64_t), const OaStrided &items) {
    T values[batch];
    uint8_t converted[batch * sizeof(T)];  // no number is larger than the machine's own
    for (int64_t done = 0; done < items.count; done += batch) {
        const int64_t some = std::min(batch, items.count - done);
        for (int64_t i = 0; i < some; ++i)
            values[i] = read(items.src + (done + i) * items.src_stride, slot.src.size);
        const auto *results = reinterpret_cast<const uint8_t *>(values);
        if (slot.plan.src != slot.plan.dst) {
            BinrepConvertRun(slot.plan, values, converted, some);
            results = converted;
        }
        OalScatter(results, slot.dst.size, items.dst + done * items.dst_stride, items.dst_stride, some);
    }
}

}  // namespace

int OalPlanBinaryToAscii(ObjDesc *node, OaDataType ascii_type, int default_width) {
    OaSlot *slot = OalSlotOf(node);
    slot->conversion_type = OA_BINARY_TO_ASCII;
    slot->dst.data_type = ascii_type;
    if (ascii_type == OA_ASCII_BIT_STRING)
        return plan_bits(node, slot);
    const bool real = slot->src.binrep->kind == 1;
    const OaNativeTypes &native = OalGetNativeCTypeInfo();
    slot->plan = OalPlanBinrep(slot->src.binrep, real ? native.real : native.signed_long);
    if (!parse_format(format_of(node), real, &slot->ascii_form)) {
        OaReportFailure(601, "%s: error parsing FORMAT keyword value. Using default from profile.", routine);
        slot->ascii_form = {real ? 'g' : 'd', default_width - 1, real ? default_width - 7 : 0};
    }
    slot->dst.size = slot->ascii_form.width + 1;
    return 0;
}

void OalPlanAsciiToBinary(OaSlot *slot) {
    const OaNativeTypes &native = OalGetNativeCTypeInfo();
    slot->conversion_type = OA_ASCII_TO_BINARY;
    slot->plan =
        OalPlanBinrep(slot->src.data_type == OA_ASCII_REAL ? native.real : native.signed_long, slot->dst.binrep);
}

int OalAsciiToBinary(const OaSlot &slot, const OaStrided &items) {
    switch (slot.src.data_type) {
        case OA_ASCII_REAL:
            read_texts<double>(slot, OalReadAsciiReal, items);
            return 0;
        case OA_ASCII_INTEGER:
            read_texts<int64_t>(slot, OalReadAsciiInteger, items);
            return 0;
        default:
            OaReportFailure(535, "%s: can't do ASCII_TO_BINARY conversion on %s!", "OalConvert",
                            OaKRVDataTypetoStr(slot.src.data_type));
            return 1;
    }
}

void OalBinaryToAsciiRun(const OaSlot &slot, const uint8_t *src, uint8_t *dst, int64_t count) {
    if (slot.dst.data_type == OA_ASCII_BIT_STRING)
        put_bits(slot, src, dst, count);
    else if (slot.src.binrep->kind == 1)
        write_texts<double>(slot, src, dst, count);
    else
        write_texts<int64_t>(slot, src, dst, count);
}
