// The elements of sequence and set values.
#include "base/text.h"
#include "oa/oa.h"
#include "oa/value_text.h"

#include <string_view>
#include <utility>

namespace {

constexpr std::string_view white_space = " \t\r\n\f\v";

class ElementSplitter {
  public:
    std::vector<std::string> split(std::string_view value) {
        for (const char c : value)
            take(c);
        // Brackets without anything between them hold no element.
        if (!elements_.empty() || is_quoted_ || !util_trim(text_, white_space).empty())
            end_element();
        return std::move(elements_);
    }

  private:
    void take(char c) {
        if (quote_) {
            if (c == quote_)
                quote_ = '\0';
            else
                text_ += c;
        } else if (in_units_) {
            in_units_ = c != '>';
        } else if (c == ',') {
            end_element();
        } else if (c == '<') {
            in_units_ = true;
        } else if ((c == '"' || c == '\'') && util_trim(text_, white_space).empty()) {
            quote_ = c;
            is_quoted_ = true;
            text_.clear();
        } else if (!is_quoted_ && !util_contains("(){}", {&c, 1})) {
            text_ += c;
        }
    }

    void end_element() {
        elements_.emplace_back(is_quoted_ ? std::string_view(text_) : util_trim(text_, white_space));
        text_.clear();
        is_quoted_ = false;
        in_units_ = false;
    }

    std::vector<std::string> elements_;
    std::string text_;  // of the current element
    char quote_ = '\0';
    bool is_quoted_ = false;
    bool in_units_ = false;
};

}  // namespace

int OaSequencetoStrArray(const char *value, std::vector<std::string> *out) {
    if (!value || !out) {
        OaReportFailure(501, "%s: value is NULL.", __func__);
        return 1;
    }
    *out = ElementSplitter().split(value);
    return 0;
}

int OaSequencetoLongArray(const char *value, std::vector<int64_t> *out) {
    std::vector<std::string> elements;
    if (!out || OaSequencetoStrArray(value, &elements) != 0)
        return 1;
    out->clear();
    for (const std::string &element : elements) {
        int64_t number = 0;
        if (!OalParseInteger(element, &number)) {
            OaReportFailure(600, "%s: %s is not an integer.", __func__, element.c_str());
            return 1;
        }
        out->push_back(number);
    }
    return 0;
}
