// Curves as files: pictures of lines, and numbers.
#include "base/text.h"
#include "tables/model/curve_plot.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <string_view>

namespace {

constexpr double font_size = 12;  // pixels

// Length of the UTF-8 character at the start of a text; 0 when it is none that XML allows.
size_t character_length(std::string_view text) {
    const auto first = static_cast<uint8_t>(text[0]);
    if (first < 0x80)
        return first >= 0x20 && first != 0x7f ? 1 : 0;
    const size_t length = first >= 0xf0 && first < 0xf5 ? 4 : first >= 0xe0 ? 3 : first >= 0xc2 ? 2 : 0;
    if (length == 0 || first >= 0xf5 || length > text.size())
        return 0;
    uint32_t code = first & (0xffu >> (length + 1));
    for (size_t i = 1; i < length; ++i) {
        const auto next = static_cast<uint8_t>(text[i]);
        if ((next & 0xc0) != 0x80)
            return 0;
        code = code << 6 | (next & 0x3fu);
    }
    constexpr std::array<uint32_t, 5> least = {0, 0, 0x80, 0x800, 0x10000};
    const bool allowed =
        code >= least[length] && (code < 0xd800 || code > 0xdfff) && (code & 0xfffe) != 0xfffe && code <= 0x10ffff;
    return allowed ? length : 0;
}

std::string escaped(std::string_view text) {
    std::string out;
    while (!text.empty()) {
        const size_t length = character_length(text);
        switch (text[0]) {
            case '&':
                out += "&amp;";
                break;
            case '<':
                out += "&lt;";
                break;
            case '>':
                out += "&gt;";
                break;
            default:
                out += length > 0 ? text.substr(0, length) : std::string_view("?");
        }
        text.remove_prefix(length > 0 ? length : 1);
    }
    return out;
}

std::string colour_text(CurveColour colour) {
    return util_format("#%02x%02x%02x", colour.red, colour.green, colour.blue);
}

std::string ink_text(CurveInk ink, size_t curve) {
    switch (ink) {
        case CurveInk::Grid:
            return "#dddddd";
        case CurveInk::Frame:
            return "#666666";
        case CurveInk::Text:
            return "#000000";
        case CurveInk::Curve:
            break;
    }
    return colour_text(curve_colour(curve, false));
}

void append_place(CurvePoint place, std::string *out) {
    // In the middle of pixels, as windows have it.
    std::array<char, 64> text;
    auto *end = std::to_chars(text.data(), text.data() + 32, place.x + 0.5, std::chars_format::fixed, 2).ptr;
    *end++ = ' ';
    end = std::to_chars(end, text.data() + text.size(), place.y + 0.5, std::chars_format::fixed, 2).ptr;
    out->append(text.data(), end);
}

void append_line(const CurveLine &line, std::string *out) {
    const bool is_curve = line.ink == CurveInk::Curve;
    *out += "<path fill=\"none\" stroke=\"" + ink_text(line.ink, line.curve) + "\" stroke-width=\"" +
            (is_curve ? "1.5" : "1") + "\" stroke-linejoin=\"round\"" +
            (line.points.size() == 1 ? " stroke-linecap=\"round\"" : "") + " d=\"";
    for (size_t i = 0; i < line.points.size(); ++i) {
        *out += i == 0 ? "M" : " L";
        append_place(line.points[i], out);
    }
    // A single point between gaps is drawn by the ends of a line of no length.
    *out += line.points.size() == 1 ? " h0\"/>\n" : "\"/>\n";
}

void append_marks(const CurveMarks &marks, std::string *out) {
    *out += "<path fill=\"none\" stroke=\"" + ink_text(CurveInk::Curve, marks.curve) +
            "\" stroke-width=\"4\" stroke-linecap=\"round\" d=\"";
    for (const CurvePoint &place : marks.places) {
        *out += "M";
        append_place(place, out);
        *out += "h0";
    }
    *out += "\"/>\n";
}

void append_text(const CurveText &text, std::string *out) {
    constexpr double base_line = 0.35 * font_size;  // below the middle of the letters
    const char *anchor = text.align == CurveTextAlign::Left     ? "start"
                         : text.align == CurveTextAlign::Centre ? "middle"
                                                                : "end";
    *out +=
        util_format("<text x=\"%.2f\" y=\"%.2f\" text-anchor=\"%s\">", text.place.x, text.place.y + base_line, anchor) +
        escaped(text.text) + "</text>\n";
}

class CsvLine {
  public:
    explicit CsvLine(FILE *file) : file_(file) {}

    void add(std::string_view text) {
        begin_field();
        if (text.find_first_of(",\"\r\n") == std::string_view::npos) {
            line_ += text;
            return;
        }
        line_ += '"';
        for (const char c : text)
            line_.append(c == '"' ? 2 : 1, c);
        line_ += '"';
    }
    void add(double value) {
        begin_field();
        if (!std::isfinite(value))
            return;
        std::array<char, 32> text;
        line_.append(text.data(), std::to_chars(text.data(), text.data() + text.size(), value).ptr);
    }
    bool end() {
        line_ += '\n';
        const bool written = fwrite(line_.data(), 1, line_.size(), file_) == line_.size();
        line_.clear();
        is_first_ = true;
        return written;
    }

  private:
    void begin_field() {
        if (!is_first_)
            line_ += ',';
        is_first_ = false;
    }

    FILE *file_;
    std::string line_;
    bool is_first_ = true;
};

// Gaps are no numbers, which are not equal to themselves.
bool has_same_x(const Curve &one, const Curve &other) {
    if (one.size() != other.size())
        return false;
    for (size_t i = 0; i < one.size(); ++i) {
        if (one.x[i] != other.x[i] && !(std::isnan(one.x[i]) && std::isnan(other.x[i])))
            return false;
    }
    return true;
}

}  // namespace

std::string curve_svg(const CurveScene &scene) {
    std::string out = util_format(
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"%d\" "
        "height=\"%d\" viewBox=\"0 0 %d %d\">\n<rect width=\"100%%\" height=\"100%%\" fill=\"#ffffff\"/>\n",
        scene.width, scene.height, scene.width, scene.height);
    for (const CurveLine &line : scene.lines)
        append_line(line, &out);
    for (const CurveMarks &marks : scene.marks)
        append_marks(marks, &out);
    out += util_format("<g font-family=\"sans-serif\" font-size=\"%g\" fill=\"#000000\">\n", font_size);
    for (const CurveText &text : scene.texts)
        append_text(text, &out);
    return out + "</g>\n</svg>\n";
}

bool write_curve_csv(const CurvePlot &plot, FILE *file) {
    bool share_x = true;
    size_t rows = 0;
    for (const Curve &curve : plot.curves) {
        share_x = share_x && has_same_x(plot.curves[0], curve);
        rows = std::max(rows, curve.size());
    }
    CsvLine line(file);
    for (size_t i = 0; i < plot.curves.size(); ++i) {
        if (i == 0 || !share_x)
            line.add(plot.x_title);
        line.add(plot.curves[i].name);
    }
    bool written = line.end();
    for (size_t row = 0; row < rows && written; ++row) {
        for (size_t i = 0; i < plot.curves.size(); ++i) {
            const Curve &curve = plot.curves[i];
            const bool has_row = row < curve.size();
            if (i == 0 || !share_x)
                line.add(has_row ? curve.x[row] : std::nan(""));
            line.add(has_row ? curve.y[row] : std::nan(""));
        }
        written = line.end();
    }
    return written;
}
