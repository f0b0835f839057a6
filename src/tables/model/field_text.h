// Bytes of a field as text. Each formatter appends its text and says whether the width is one that it knows; where it
// is not, nothing is appended. None allocates but in the text that it appends to.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>

using FieldSpan = std::span<const uint8_t>;
using FieldFormat = bool (*)(FieldSpan bytes, std::string *text);

bool tb_append_char(FieldSpan bytes, std::string *text);        // bytes outside 32..126 as "."
bool tb_append_hex(FieldSpan bytes, std::string *text);         // a blank before every fourth byte after the first
bool tb_append_octal(FieldSpan bytes, std::string *text);       // two digits a byte, of the last byte all three
bool tb_append_lsb_binary(FieldSpan bytes, std::string *text);  // last byte first, a blank between bytes
bool tb_append_msb_binary(FieldSpan bytes, std::string *text);  // first byte first
bool tb_append_lsb_signed(FieldSpan bytes, std::string *text);  // integers of 1, 2, 4, 6 and 8 bytes
bool tb_append_lsb_unsigned(FieldSpan bytes, std::string *text);
bool tb_append_msb_signed(FieldSpan bytes, std::string *text);
bool tb_append_msb_unsigned(FieldSpan bytes, std::string *text);
// Reals: the shortest decimal text that reads back as the stored value; "NaN", "Inf", "-Inf". Single precision is
// written as such (0.1, not 0.10000000149011612).
bool tb_append_lsb_ieee_real(FieldSpan bytes, std::string *text);  // 4, 8 and 10 bytes
bool tb_append_msb_ieee_real(FieldSpan bytes, std::string *text);
bool tb_append_vax_real(FieldSpan bytes, std::string *text);   // F of 4 bytes, D of 8, H of 16
bool tb_append_vaxg_real(FieldSpan bytes, std::string *text);  // G of 8 bytes, H of 16
// The two halves, a blank between them.
bool tb_append_lsb_ieee_complex(FieldSpan bytes, std::string *text);
bool tb_append_msb_ieee_complex(FieldSpan bytes, std::string *text);
bool tb_append_vax_complex(FieldSpan bytes, std::string *text);
bool tb_append_vaxg_complex(FieldSpan bytes, std::string *text);

// --- One field, as a text of its own ------------------------------------------------------------------------------
// `width` in bytes. None where the width is not known to the formatter. Memory that is out ends the program with a note
// that names the formatter.

using FieldText = std::optional<std::string>;
enum VaxForm { TB_VAX_F, TB_VAX_G };

FieldText ft_char(const uint8_t *bytes, int64_t width);
FieldText ft_hex(const uint8_t *bytes, int64_t width);
FieldText ft_octal(const uint8_t *bytes, int64_t width);
FieldText ft_lsb_binary(const uint8_t *bytes, int64_t width);
FieldText ft_msb_binary_2(const uint8_t *bytes, int64_t width);
FieldText ft_lsb_integer(const uint8_t *bytes, int64_t width, int is_signed);
FieldText ft_msb_integer(const uint8_t *bytes, int64_t width, int is_signed);
FieldText ft_lsb_ieee_real(const uint8_t *bytes, int64_t width);
FieldText ft_msb_ieee_real(const uint8_t *bytes, int64_t width);
FieldText ft_vax_real(const uint8_t *bytes, int64_t width, VaxForm form);
FieldText ft_lsb_ieee_complex(const uint8_t *bytes, int64_t width);
FieldText ft_msb_ieee_complex(const uint8_t *bytes, int64_t width);
FieldText ft_vax_complex(const uint8_t *bytes, int64_t width, VaxForm form);
