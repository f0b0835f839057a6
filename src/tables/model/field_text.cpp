#include "tables/model/field_text.h"

#include "oa/binrep.h"
#include "tables/model/out_of_memory.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>

namespace {

constexpr size_t bytes_in_group = 4;  // of hexadecimal and octal text

template <typename T>
void append_number(T value, std::string *text) {
    char digits[64];
    const auto done = std::to_chars(digits, digits + sizeof digits, value);
    text->append(digits, done.ptr);
}

// --- Integers -----------------------------------------------------------------------------------------------------

enum class Order { LowFirst, HighFirst };

template <Order order>
uint64_t value_of(FieldSpan bytes) {
    uint64_t value = 0;
    if constexpr (order == Order::HighFirst) {
        for (const uint8_t byte : bytes)
            value = value << 8 | byte;
    } else {
        for (size_t i = bytes.size(); i > 0; --i)
            value = value << 8 | bytes[i - 1];
    }
    return value;
}

template <Order order, bool is_signed>
bool append_integer(FieldSpan bytes, std::string *text) {
    constexpr size_t widths[] = {1, 2, 4, 6, 8};
    if (std::ranges::find(widths, bytes.size()) == std::end(widths))
        return false;
    const uint64_t value = value_of<order>(bytes);
    if constexpr (is_signed) {
        const unsigned above = 64 - 8 * static_cast<unsigned>(bytes.size());
        append_number(static_cast<int64_t>(value << above) >> above, text);
    } else {
        append_number(value, text);
    }
    return true;
}

// --- Reals --------------------------------------------------------------------------------------------------------

template <typename T>
void append_real(T value, std::string *text) {
    if (std::isfinite(value))
        append_number(value, text);
    else
        text->append(std::isnan(value) ? "NaN" : value < 0 ? "-Inf" : "Inf");
}

// One stored form, with what turns it into a double. The text tells of values that a double has not: what the
// conversion counts is not kept for later reports.
class RealForm {
  public:
    explicit RealForm(const char *name)
        : source_(OalFindBinrepDescrip(name)), plan_(OalPlanBinrep(source_, OalGetNativeCTypeInfo().real)) {}

    size_t width() const { return source_->size; }
    double value_of(FieldSpan bytes) const {
        const BinrepErrors before = binrep_errors;
        double value = 0;
        BinrepConvertRun(plan_, bytes.data(), &value, 1);
        binrep_errors = before;
        return value;
    }

  private:
    const BinrepDescrip *source_;
    BinrepPlan plan_;
};

template <Order order>
bool append_ieee_real(FieldSpan bytes, std::string *text) {
    static const RealForm extended(order == Order::HighFirst ? "IEEE_REAL10" : "PC_REAL10");
    if (bytes.size() == 4)
        append_real(std::bit_cast<float>(static_cast<uint32_t>(value_of<order>(bytes))), text);
    else if (bytes.size() == 8)
        append_real(std::bit_cast<double>(value_of<order>(bytes)), text);
    else if (bytes.size() == extended.width())
        append_real(extended.value_of(bytes), text);
    else
        return false;
    return true;
}

bool append_vax(std::span<const RealForm> forms, FieldSpan bytes, std::string *text) {
    const auto form = std::ranges::find(forms, bytes.size(), &RealForm::width);
    if (form == forms.end())
        return false;
    const double value = form->value_of(bytes);
    const auto single = static_cast<float>(value);
    if (form->width() == sizeof single && static_cast<double>(single) == value)
        append_real(single, text);
    else
        append_real(value, text);
    return true;
}

bool append_complex(FieldFormat half, FieldSpan bytes, std::string *text) {
    const size_t width = bytes.size() / 2;
    const size_t before = text->size();
    if (bytes.size() % 2 == 0 && half(bytes.first(width), text)) {
        text->push_back(' ');
        if (half(bytes.last(width), text))
            return true;
    }
    text->resize(before);
    return false;
}

void append_bits(uint8_t byte, std::string *text) {
    for (int bit = 7; bit >= 0; --bit)
        text->push_back(byte >> bit & 1 ? '1' : '0');
}

// --- One field ----------------------------------------------------------------------------------------------------

FieldText text_of(FieldFormat format, const uint8_t *bytes, int64_t width, const char *out_of_memory) {
    return tb_or_out_of_memory(out_of_memory, [&]() -> FieldText {
        std::string text;
        if (width < 0 || !format(FieldSpan(bytes, static_cast<size_t>(width)), &text))
            return std::nullopt;
        return text;
    });
}

}  // namespace

bool tb_append_char(FieldSpan bytes, std::string *text) {
    const size_t before = text->size();
    text->resize(before + bytes.size());
    std::ranges::transform(bytes, text->data() + before,
                           [](uint8_t byte) { return byte >= 32 && byte <= 126 ? static_cast<char>(byte) : '.'; });
    return true;
}

bool tb_append_hex(FieldSpan bytes, std::string *text) {
    constexpr char digits[] = "0123456789abcdef";
    for (size_t i = 0; i < bytes.size(); ++i) {
        if (i > 0 && i % bytes_in_group == 0)
            text->push_back(' ');
        text->push_back(digits[bytes[i] >> 4]);
        text->push_back(digits[bytes[i] & 15]);
    }
    return true;
}

// What follows a byte of three digits is written over its third.
bool tb_append_octal(FieldSpan bytes, std::string *text) {
    size_t position = text->size();
    for (size_t i = 0; i < bytes.size(); ++i) {
        text->resize(position);
        if (i > 0 && i % bytes_in_group == 0)
            text->push_back(' ');
        position = text->size() + 2;
        for (int shift = bytes[i] > 63 ? 6 : 3; shift >= 0; shift -= 3)
            text->push_back(static_cast<char>('0' + (bytes[i] >> shift & 7)));
    }
    return true;
}

bool tb_append_msb_binary(FieldSpan bytes, std::string *text) {
    for (size_t i = 0; i < bytes.size(); ++i) {
        if (i > 0)
            text->push_back(' ');
        append_bits(bytes[i], text);
    }
    return true;
}

bool tb_append_lsb_binary(FieldSpan bytes, std::string *text) {
    for (size_t i = bytes.size(); i > 0; --i) {
        append_bits(bytes[i - 1], text);
        if (i > 1)
            text->push_back(' ');
    }
    return true;
}

bool tb_append_lsb_signed(FieldSpan bytes, std::string *text) {
    return append_integer<Order::LowFirst, true>(bytes, text);
}
bool tb_append_lsb_unsigned(FieldSpan bytes, std::string *text) {
    return append_integer<Order::LowFirst, false>(bytes, text);
}
bool tb_append_msb_signed(FieldSpan bytes, std::string *text) {
    return append_integer<Order::HighFirst, true>(bytes, text);
}
bool tb_append_msb_unsigned(FieldSpan bytes, std::string *text) {
    return append_integer<Order::HighFirst, false>(bytes, text);
}

bool tb_append_lsb_ieee_real(FieldSpan bytes, std::string *text) {
    return append_ieee_real<Order::LowFirst>(bytes, text);
}
bool tb_append_msb_ieee_real(FieldSpan bytes, std::string *text) {
    return append_ieee_real<Order::HighFirst>(bytes, text);
}
bool tb_append_vax_real(FieldSpan bytes, std::string *text) {
    static const RealForm forms[] = {RealForm("VAXF_REAL4"), RealForm("VAXD_REAL8"), RealForm("VAXH_REAL16")};
    return append_vax(forms, bytes, text);
}
bool tb_append_vaxg_real(FieldSpan bytes, std::string *text) {
    static const RealForm forms[] = {RealForm("VAXG_REAL8"), RealForm("VAXH_REAL16")};
    return append_vax(forms, bytes, text);
}

bool tb_append_lsb_ieee_complex(FieldSpan bytes, std::string *text) {
    return append_complex(tb_append_lsb_ieee_real, bytes, text);
}
bool tb_append_msb_ieee_complex(FieldSpan bytes, std::string *text) {
    return append_complex(tb_append_msb_ieee_real, bytes, text);
}
bool tb_append_vax_complex(FieldSpan bytes, std::string *text) {
    return append_complex(tb_append_vax_real, bytes, text);
}
bool tb_append_vaxg_complex(FieldSpan bytes, std::string *text) {
    return append_complex(tb_append_vaxg_real, bytes, text);
}

FieldText ft_char(const uint8_t *bytes, int64_t width) {
    return text_of(tb_append_char, bytes, width,
                   "bit col conversion (ft-hex) - unable to allocate memory");  // the note has always said so
}
FieldText ft_hex(const uint8_t *bytes, int64_t width) {
    return text_of(tb_append_hex, bytes, width, "bit col conversion ft-hex - unable to allocate memory");
}
FieldText ft_octal(const uint8_t *bytes, int64_t width) {
    return text_of(tb_append_octal, bytes, width, "bit col conversion ft_octal - unable to allocate memory");
}
FieldText ft_lsb_binary(const uint8_t *bytes, int64_t width) {
    return text_of(tb_append_lsb_binary, bytes, width, "bit col conversion ft_lsb_binary - unable to allocate memory");
}
FieldText ft_msb_binary_2(const uint8_t *bytes, int64_t width) {
    return text_of(tb_append_msb_binary, bytes, width,
                   "bit col conversion ft_msb_binary_2 - unable to allocate memory");
}
FieldText ft_lsb_integer(const uint8_t *bytes, int64_t width, int is_signed) {
    return text_of(is_signed ? tb_append_lsb_signed : tb_append_lsb_unsigned, bytes, width,
                   "ft_lsb_integer - unable to allocate memory");
}
FieldText ft_msb_integer(const uint8_t *bytes, int64_t width, int is_signed) {
    return text_of(is_signed ? tb_append_msb_signed : tb_append_msb_unsigned, bytes, width,
                   "bit col conversion ft_msb_integer - unable to allocate memory");
}
FieldText ft_lsb_ieee_real(const uint8_t *bytes, int64_t width) {
    return text_of(tb_append_lsb_ieee_real, bytes, width,
                   "bit col conversion ft_lsb_ieee_real - unable to allocate memory");
}
FieldText ft_msb_ieee_real(const uint8_t *bytes, int64_t width) {
    return text_of(tb_append_msb_ieee_real, bytes, width,
                   "bit col conversion ft_msb_ieee_real - unable to allocate memory");
}
FieldText ft_vax_real(const uint8_t *bytes, int64_t width, VaxForm form) {
    return text_of(form == TB_VAX_G ? tb_append_vaxg_real : tb_append_vax_real, bytes, width,
                   "bit col conversion ft_vax_real - unable to allocate memory");
}
FieldText ft_lsb_ieee_complex(const uint8_t *bytes, int64_t width) {
    return text_of(tb_append_lsb_ieee_complex, bytes, width, "ft_lsb_ieee_complex - unable to allocate memory");
}
FieldText ft_msb_ieee_complex(const uint8_t *bytes, int64_t width) {
    return text_of(tb_append_msb_ieee_complex, bytes, width,
                   "bit col conversion ft_msb_ieee_complex - unable to allocate memory");
}
FieldText ft_vax_complex(const uint8_t *bytes, int64_t width, VaxForm form) {
    return text_of(form == TB_VAX_G ? tb_append_vaxg_complex : tb_append_vax_complex, bytes, width,
                   "bit col conversion ft_vax_complex - unable to allocate memory");
}
