// The types of value texts and the words and elements in them.
#include "odl/value.h"

#include "base/text.h"
#include "odl/characters.h"

namespace {

using odl::is_digit;
using odl::marks_of;

constexpr bool is_before_element(char c) {
    return c == ' ' || c == '\n' || (marks_of(c) & odl::MARK_BREAK);
}

constexpr char upper(char c) {
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

// Walks an unquoted value, refining its type from character to character. A number's "E" begins the walk anew on the
// exponent, which must be a number too.
class TypeWalk {
  public:
    explicit TypeWalk(std::string_view text) : text_(text) {}

    OdlValueType type() {
        for (; position_ < text_.size(); ++position_) {
            if (!accept(upper(text_[position_])))
                return VALUE_UNKNOWN;
        }
        const bool is_number = type_ == VALUE_INTEGER || type_ == VALUE_REAL;
        if ((sign_ || is_exponent_) && !is_number)
            return VALUE_UNKNOWN;
        return is_exponent_ ? VALUE_REAL : type_;
    }

  private:
    // True at the first character, or at the one after a leading sign.
    bool at_start() const { return position_ == start_ || (position_ == start_ + 1 && sign_); }

    bool accept(char c) {
        switch (c) {
            case '0':
            case '1':
            case '2':
            case '3':
            case '4':
            case '5':
            case '6':
            case '7':
            case '8':
            case '9':
                if (at_start())
                    type_ = VALUE_INTEGER;
                return true;
            case '+':
            case '-':
                return accept_sign_or_dash(c);
            case '.':
                return accept_point();
            case '#':
                return accept_based_integer();
            case ':':
                return accept_colon();
            case 'E':
                return accept_e();
            case 'T':
                return accept_t();
            case 'Z':
                return type_ == VALUE_SYMBOL || (type_ == VALUE_DATE_TIME && position_ + 1 == text_.size());
            default:
                return type_ == VALUE_SYMBOL && (marks_of(c) & odl::MARK_IDENTIFIER);
        }
    }

    bool accept_sign_or_dash(char c) {
        if (position_ == start_)
            return sign_ = true;
        if (c == '+' || ++dashes_ > 2 || (type_ != VALUE_INTEGER && type_ != VALUE_DATE))
            return false;
        type_ = VALUE_DATE;
        return true;
    }

    bool accept_point() {
        if (type_ == VALUE_DATE_TIME)
            return ++points_ == 1;
        if (type_ != VALUE_INTEGER && !at_start())
            return false;
        type_ = VALUE_REAL;
        return true;
    }

    // radix#digits#, where everything before this "#" is the radix.
    bool accept_based_integer() {
        if (sign_ || type_ != VALUE_INTEGER)
            return false;
        constexpr unsigned largest_radix = 16;
        unsigned radix = 0;
        for (const char digit : text_.substr(start_, position_ - start_))
            radix = radix > largest_radix ? radix : radix * 10 + static_cast<unsigned>(digit - '0');
        std::string_view digits = text_.substr(position_ + 1);
        if (radix < 2 || radix > largest_radix || !digits.ends_with('#'))
            return false;
        digits.remove_suffix(1);
        if (digits.starts_with('+') || digits.starts_with('-'))
            digits.remove_prefix(1);
        const std::string_view allowed = std::string_view("0123456789ABCDEF").substr(0, radix);
        for (const char digit : digits) {
            if (allowed.find(upper(digit)) == std::string_view::npos)
                return false;
        }
        position_ = text_.size();
        return true;
    }

    bool accept_colon() {
        return type_ == VALUE_DATE_TIME && ++colons_ <= 2 && points_ == 0 && is_digit(text_[position_ - 1]) &&
               position_ + 1 < text_.size() && is_digit(text_[position_ + 1]);
    }

    bool accept_e() {
        if (type_ != VALUE_INTEGER && type_ != VALUE_REAL)
            return type_ == VALUE_SYMBOL;
        const size_t exponent = position_ + 1;
        *this = TypeWalk(text_);
        start_ = exponent;
        position_ = exponent - 1;
        is_exponent_ = true;
        return true;
    }

    bool accept_t() {
        if (type_ == VALUE_DATE)
            type_ = VALUE_DATE_TIME;
        else if (type_ == VALUE_DATE_TIME)
            return ++further_ts_ == 1;
        else
            return type_ == VALUE_SYMBOL;
        return true;
    }

    std::string_view text_;
    size_t start_ = 0;
    size_t position_ = 0;
    OdlValueType type_ = VALUE_SYMBOL;
    bool sign_ = false;
    bool is_exponent_ = false;
    int dashes_ = 0;
    int colons_ = 0;
    int points_ = 0;
    int further_ts_ = 0;
};

// The type without noting a failure.
OdlValueType type_of(std::string_view text) {
    text = util_trim(text.substr(0, text.find('<')));
    if (text.empty())
        return VALUE_SYMBOL;
    switch (text.front()) {
        case '"':
            return VALUE_TEXT;
        case '\'':
            return VALUE_SYMBOL;
        case '(':
            return VALUE_SEQUENCE;
        case '{':
            return VALUE_SET;
        default:
            return TypeWalk(text).type();
    }
}

const char *pass(const char *text, uint16_t mark, bool while_marked) {
    while (*text && ((marks_of(*text) & mark) != 0) == while_marked)
        ++text;
    return text;
}

}  // namespace

OdlValueType odl::value_type(std::string_view text) {
    const OdlValueType type = type_of(text);
    if (type == VALUE_UNKNOWN)
        odl_errno = 311;
    return type;
}

std::string_view odl::take_element(std::string_view &list) {
    while (!list.empty() && is_before_element(list.front()))
        list.remove_prefix(1);
    size_t end = 0;
    while (end < list.size() && !(marks_of(list[end]) & MARK_BREAK))
        ++end;
    const std::string_view element = without_trailing_blanks(list.substr(0, end));
    list.remove_prefix(end);
    return element;
}

OdlValueType OdlDataType(const char *text) {
    return text ? odl::value_type(text) : VALUE_UNKNOWN;
}

const char *OdlValueStart(const char *text) {
    if (!text)
        return nullptr;
    while (is_before_element(*text))
        ++text;
    return text;
}

const char *OdlValueEnd(const char *text) {
    if (!text)
        return nullptr;
    const char *end = pass(text, odl::MARK_BREAK, false);
    while (end > text && (*end == '\0' || *end == ' ' || (marks_of(*end) & odl::MARK_BREAK)))
        --end;
    return end;
}

const char *OdlFirstWord(const char *text) {
    return text ? pass(text, odl::MARK_WORD, false) : nullptr;
}

const char *OdlNextWord(const char *text) {
    return text ? OdlFirstWord(pass(text, odl::MARK_WORD, true)) : nullptr;
}
