#include "gui/text_bytes.h"

namespace {

constexpr char16_t FIRST_BYTE = 0xee00;  // the private character of byte 0; fonts seldom have any there
constexpr char16_t LAST_BYTE = FIRST_BYTE + 0xff;

// Characters that a document takes for the end of a block, a line or a frame, and those with a meaning of our own.
bool is_reserved(char32_t code) {
    return code == 0x2028 || code == 0x2029 || code == 0xfdd0 || code == 0xfdd1 || code == ROW_CONTINUES.unicode() ||
           (code >= FIRST_BYTE && code <= LAST_BYTE);
}

struct Utf8Form {
    uint8_t mask;
    uint8_t lead;
    int length;
    char32_t lowest;
};
constexpr Utf8Form FORMS[] = {{0xe0, 0xc0, 2, 0x80}, {0xf0, 0xe0, 3, 0x800}, {0xf8, 0xf0, 4, 0x10000}};

struct Decoded {
    char32_t code = 0;
    int length = 0;  // 0: no valid character starts here
};

Decoded decode(std::string_view bytes) {
    const auto lead = static_cast<uint8_t>(bytes[0]);
    for (const Utf8Form &form : FORMS) {
        if ((lead & form.mask) != form.lead)
            continue;
        if (bytes.size() < static_cast<size_t>(form.length))
            return {};
        auto code = static_cast<char32_t>(lead & ~form.mask);
        for (int i = 1; i < form.length; ++i) {
            const auto next = static_cast<uint8_t>(bytes[static_cast<size_t>(i)]);
            if ((next & 0xc0) != 0x80)
                return {};
            code = code << 6 | (next & 0x3f);
        }
        const bool is_surrogate = code >= 0xd800 && code <= 0xdfff;
        return code < form.lowest || code > 0x10ffff || is_surrogate ? Decoded{} : Decoded{code, form.length};
    }
    return {};
}

}  // namespace

QString text_from_bytes(std::string_view bytes) {
    QString text;
    text.reserve(static_cast<qsizetype>(bytes.size()));
    for (size_t at = 0; at < bytes.size();) {
        const auto byte = static_cast<uint8_t>(bytes[at]);
        if (byte < 0x80) {
            const bool is_plain = byte != 0 && byte != '\n' && byte != '\r';
            text += QChar(static_cast<char16_t>(is_plain ? byte : FIRST_BYTE + byte));
            ++at;
            continue;
        }
        const Decoded found = decode(bytes.substr(at));
        if (found.length == 0 || is_reserved(found.code)) {
            text += QChar(static_cast<char16_t>(FIRST_BYTE + byte));
            ++at;
            continue;
        }
        text += QChar::fromUcs4(found.code);
        at += static_cast<size_t>(found.length);
    }
    return text;
}

std::string bytes_from_text(QStringView text) {
    std::string bytes;
    bytes.reserve(static_cast<size_t>(text.size()));
    for (qsizetype at = 0; at < text.size();) {
        const char16_t unit = text[at].unicode();
        if (unit < 0x80 || (unit >= FIRST_BYTE && unit <= LAST_BYTE)) {
            bytes += static_cast<char>(unit & 0xff);
            ++at;
            continue;
        }
        const qsizetype length = text[at].isHighSurrogate() && at + 1 < text.size() ? 2 : 1;
        if (unit != ROW_CONTINUES.unicode()) {
            const QByteArray utf8 = text.mid(at, length).toUtf8();
            bytes.append(utf8.constData(), static_cast<size_t>(utf8.size()));
        }
        at += length;
    }
    return bytes;
}
