// Numbers and places of plots.
#include "support/corpus.h"
#include "tables/model/curve_column.h"
#include "tables/model/plot_data.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>
#include <string_view>

namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double nan = std::numeric_limits<double>::quiet_NaN();

PlotAxis axis(std::vector<double> values) {
    PlotAxis scaled = {"", "", "", std::move(values)};
    scale_axis(&scaled);
    return scaled;
}

double number(std::string_view text) {
    return plot_number({reinterpret_cast<const uint8_t *>(text.data()), text.size()});
}

TEST(PlotData, ReadsTheNumberAtTheStartOfAField) {
    EXPECT_EQ(number("  -12.5E1 7"), -125);
    EXPECT_EQ(number("1y"), 1);
    EXPECT_EQ(number("+0x1F"), 31);
    EXPECT_EQ(number("1e999"), infinity);
    EXPECT_EQ(number("A"), 0);
    EXPECT_EQ(number("    "), 0);
    EXPECT_EQ(number(""), 0);
    EXPECT_EQ(number("1" + std::string(60, '0')), 1e29) << "thirty characters";
    EXPECT_EQ(plot_row_number(" 12abc"), 12);
    EXPECT_EQ(plot_row_number("99999999999999999999"), INT64_MAX);
    EXPECT_EQ(plot_choice_note({0, 1, 1, INT64_MAX}, INT64_MAX), "At most 50000000 rows can be plotted");
}

TEST(PlotData, PutsPointsAsTheTextsOfTheAxesSay) {
    const PlotPoint start = plot_frame;
    const struct {
        std::vector<double> x, y;
        const char *x_minimum, *x_maximum;
        std::vector<PlotPoint> line;
    } cases[] = {
        {{2, 3, 6}, {-1, 0.5, 1}, "2.000000", "6.000000", {start, {100, 250}, {200, 100}, {500, 50}}},
        {{5, 5}, {0, 3}, "5.000000", "5.000000", {start, {100, 250}, {100, 50}}},
        {{0, 1e-9}, {7, 7}, "0.000000", "0.000000", {start, {100, 250}, {100, 250}}},
        // A range that its texts round up and down.
        {{0, 1.4e-6}, {0, 1.6e-6}, "0.000000", "0.000001", {start, {100, 250}, {660, 90}}},
        {{0, infinity, nan, 1},
         {0, nan, 4, 4},
         "0.000000",
         "inf",
         {start, {100, 250}, {100, 250}, {100, 50}, {100, 50}}},
        {{nan}, {-infinity}, "0.000000", "0.000000", {start, {100, 250}}},
        {{}, {}, "0.000000", "0.000000", {start}},
    };
    for (const auto &[x, y, minimum, maximum, line] : cases) {
        const PlotAxis across = axis(x);
        EXPECT_EQ(across.minimum, minimum);
        EXPECT_EQ(across.maximum, maximum);
        EXPECT_EQ(plot_line(across, axis(y)), line) << maximum;
        EXPECT_TRUE(plot_picture(line).image) << "points beyond the picture stay at its edge";
    }
    EXPECT_EQ(axis({1e300}).maximum.size(), 308u) << "all digits";
    const auto texts = plot_texts(axis({1, 2}), axis({3, 4}));
    EXPECT_EQ(texts[1].text, "2.000000");
    EXPECT_EQ(texts[1].start, (PlotPoint{400, 265}));
    EXPECT_EQ(texts[4].text, "4.000000");
    EXPECT_EQ(texts[4].start, (PlotPoint{0, 60}));
}

TEST(CurvePlot, TicksAreRoundNumbersWithinTheRange) {
    const struct {
        CurveRange range;
        int most;
        std::vector<std::string> texts;
    } cases[] = {
        {{-0.02, 1.02}, 6, {"0.0", "0.5", "1.0"}},
        {{-0.31, 0.32}, 8, {"-0.3", "-0.2", "-0.1", "0.0", "0.1", "0.2", "0.3"}},
        {{1e8 + 0.4, 1e8 + 4.2}, 5, {"100000001", "100000002", "100000003", "100000004"}},
        {{0, 3e-12}, 4, {"0", "1e-12", "2e-12", "3e-12"}},
        {{-8e307, 8e307}, 5, {"-5e+307", "0", "5e+307"}},
        {{0, 5e-324}, 5, {}},
        {{2, 2}, 5, {}},
        {{nan, 1}, 5, {}},
    };
    for (const auto &[range, most, texts] : cases) {
        const CurveTicks ticks = curve_ticks(range, most);
        if (range.high != 5e-324) {  // of the least range only that it ends matters
            EXPECT_EQ(ticks.texts, texts) << range.low << " " << range.high;
        }
        EXPECT_LE(ticks.values.size(), static_cast<size_t>(most));
    }
    const auto range_of = [](std::vector<double> values) {
        return curve_x_range({"", "", "", {{"", values, values}}});
    };
    EXPECT_LT(range_of({3, 3}).low, range_of({3, 3}).high);
    EXPECT_LT(range_of({0}).low, range_of({0}).high);
    const CurveRange widest = range_of({-1.7e308, 1.7e308, nan, infinity});
    EXPECT_TRUE(std::isfinite(widest.high - widest.low));
}

TEST(CurveColumn, NumbersOfRealTablesAreWhatOthersRead) {
    const auto columns = read_corpus_list("real/tables.tsv");
    if (columns.empty())
        GTEST_SKIP() << "no corpus at " << corpus_path("real");
    int compared = 0;
    for (auto row : columns) {
        const OdlTree root(OaParseLabelFile(corpus_path("real/" + row["table"] + ".LBL").c_str(), nullptr, 0, 1));
        const TableProduct product = tb_read_product(root.get());
        ASSERT_FALSE(product.tables.empty()) << row["table"];
        const TableInfo &table = product.tables[0];
        for (const ColumnInfo *column : plot_columns(table)) {
            if (column->name != row["column"] || !is_numeric_column(table, *column))
                continue;
            std::vector<double> values;
            read_curve_column(tb_open_reader(product.file, table).get(), table, *column, 1, table.rows, &values);
            std::erase_if(values, [](double value) { return std::isnan(value); });
            const std::string what = row["table"] + " " + row["column"];
            ASSERT_EQ(values.size(), static_cast<size_t>(std::stol(row["values"]) - std::stol(row["missing"]))) << what;
            const auto [low, high] = std::minmax_element(values.begin(), values.end());
            EXPECT_NEAR(*low, std::stod(row["min"]), 1e-9 * std::abs(*low)) << what;
            EXPECT_NEAR(*high, std::stod(row["max"]), 1e-9 * std::abs(*high)) << what;
            ++compared;
        }
    }
    EXPECT_GT(compared, 20);
}

CurveFont font() {
    return {[](const std::string &text) { return static_cast<int>(7 * text.size()); }, 16};
}

std::vector<CurveLine> lines_of(const CurveScene &scene) {
    std::vector<CurveLine> lines = scene.lines;
    std::erase_if(lines, [](const CurveLine &line) { return line.ink != CurveInk::Curve; });
    return lines;
}

TEST(CurvePlot, DrawsAMillionPointsByTheirExtremesAndBreaksLinesAtGaps) {
    CurvePlot plot = {"", "X", "Y", {{"saw", {}, {}}}};
    Curve &saw = plot.curves[0];
    for (int i = 0; i < 1'000'000; ++i) {
        saw.x.push_back(i);
        saw.y.push_back(i == 543'210 ? 50 : i == 543'215 ? -50 : i % 2);
    }
    CurveScene scene = curve_scene(plot, {}, 800, 500, font());
    ASSERT_EQ(lines_of(scene).size(), 1u);
    EXPECT_FALSE(scene.lines_left_out);
    const std::vector<CurvePoint> points = lines_of(scene)[0].points;
    EXPECT_LE(points.size(), 4u * 800);
    double top = 1e9, bottom = 0;
    for (size_t i = 0; i < points.size(); ++i) {
        top = std::min(top, points[i].y);
        bottom = std::max(bottom, points[i].y);
        EXPECT_TRUE(i == 0 || points[i].x >= points[i - 1].x - 1) << i;
    }
    const double room = (scene.frame_bottom - scene.frame_top) * 0.02 / 1.04;
    EXPECT_NEAR(top, scene.frame_top + room, 0.01) << "the one high value";
    EXPECT_NEAR(bottom, scene.frame_bottom - room, 0.01);

    for (size_t i = 0; i < saw.x.size(); ++i)
        saw.x[i] = static_cast<double>(i * 7919 % 1'000'003);
    scene = curve_scene(plot, {}, 800, 500, font());
    EXPECT_TRUE(scene.lines_left_out) << "a tangle";
    ASSERT_EQ(scene.marks.size(), 1u);
    EXPECT_LE(scene.marks[0].places.size(), 800u * 500);

    saw = {"gaps", {0, 1, 2, nan, 4, 5, 6}, {0, 1, nan, 3, 4, infinity, 6}};
    scene = curve_scene(plot, {}, 800, 500, font());
    std::vector<size_t> sizes;
    for (const CurveLine &line : lines_of(scene))
        sizes.push_back(line.points.size());
    EXPECT_EQ(sizes, (std::vector<size_t>{2, 1, 1}));
    for (const int size : {0, 1, 30, 1 << 30})
        EXPECT_FALSE(curve_scene(plot, {false, true, true}, size, 1, font()).texts.empty()) << size;
}

TEST(CurvePlot, OfNoPointSaysSoAndKeepsTheRangeOfX) {
    CurvePlot plot = {"", "X", "Y", {{"A", {10, 30}, {nan, nan}}}};
    plot.remark = "Nothing";
    const auto has_text = [&](const std::string &wanted) {
        const CurveScene scene = curve_scene(plot, {}, 640, 400, font());
        return std::ranges::any_of(scene.texts, [&](const CurveText &text) { return text.text == wanted; });
    };
    EXPECT_TRUE(has_text("Nothing"));
    EXPECT_NEAR(curve_x_range(plot).low, 9.6, 1e-9);
    EXPECT_FALSE(has_text("A"));
    plot.names_one = true;
    EXPECT_TRUE(has_text("A"));
    plot.curves[0].y[1] = 5;
    EXPECT_FALSE(has_text("Nothing"));
}

TEST(CurvePlot, NamesOfManyCurvesKeepClearOfEachOther) {
    for (const size_t count : {2u, 3u, 20u}) {
        CurvePlot plot = {"", "X", "Y TITLE", {}};
        for (size_t i = 0; i < count; ++i)
            plot.curves.push_back({"A CURVE OF NUMBER " + std::to_string(i), {0, 1}, {0, 1}});
        const CurveScene scene = curve_scene(plot, {}, 640, 400, font());
        std::vector<CurveText> names;
        for (const CurveText &text : scene.texts) {
            if (text.place.y < scene.frame_top && text.align == CurveTextAlign::Left)
                names.push_back(text);
        }
        ASSERT_EQ(names.size(), count + 1) << "with the title";
        for (const CurveText &one : names) {
            EXPECT_LE(one.place.x + font().width(one.text), 640) << one.text;
            for (const CurveText &other : names) {
                EXPECT_TRUE(&one == &other || std::abs(one.place.y - other.place.y) >= 16 ||
                            one.place.x + font().width(one.text) < other.place.x ||
                            other.place.x + font().width(other.text) < one.place.x)
                    << one.text << " over " << other.text;
            }
        }
    }
}

TEST(CurvePlot, WritesDrawingsAndNumbers) {
    const CurvePlot plot = {"", "X, m", "Y", {{"A<&\xff\x01", {1, nan, 0.1}, {2, 3, 4}}, {"B", {1, nan, 0.1}, {5, 6}}}};
    const std::string svg = curve_svg(curve_scene(plot, {true, true, true}, 400, 300, font()));
    EXPECT_NE(svg.find(">A&lt;&amp;?"
                       "?</text>"),
              std::string::npos)
        << svg;
    EXPECT_EQ(svg.find("nan"), std::string::npos);
    const auto csv = [](const CurvePlot &written) {
        FILE *file = tmpfile();
        EXPECT_TRUE(write_curve_csv(written, file));
        std::string text(static_cast<size_t>(ftell(file)), ' ');
        rewind(file);
        EXPECT_EQ(fread(text.data(), 1, text.size(), file), text.size());
        fclose(file);
        return text;
    };
    EXPECT_EQ(csv({"", "X, m", "Y", {plot.curves[0]}}), "\"X, m\",A<&\xff\x01\n1,2\n,3\n0.1,4\n");
    EXPECT_EQ(csv(plot), "\"X, m\",A<&\xff\x01,\"X, m\",B\n1,2,1,5\n,3,,6\n0.1,4,,\n") << "of other lengths";
    EXPECT_EQ(csv({"", "X", "Y", {{"A", {1}, {2}}, {"B", {1}, {3}}}}), "X,A,B\n1,2,3\n");
    FILE *full = fopen("/dev/full", "w");
    if (full) {
        setvbuf(full, nullptr, _IONBF, 0);
        EXPECT_FALSE(write_curve_csv(plot, full));
        fclose(full);
    }
}

}  // namespace
