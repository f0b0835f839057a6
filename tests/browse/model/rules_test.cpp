// Which files a walk offers: the skip rules, the quick label test, the texts of names.
#include "base/text.h"
#include "browse/model/browse_state.h"
#include "support/scratch.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

namespace {

TEST(BrowseRules, AcceptAnExclusiveExtensionAlone) {
    BrowseState state;
    state.exclusive_extension = "IMG";
    state.skipped_extensions = ".IMG";
    state.skipped_directory = "/D/";
    const std::pair<const char *, bool> rows[] = {
        {"/D/x.IMG", true},        {"/data/x.img", false}, {"/data/a.b/x.IMG", false},
        {"/data/x.IMG.gz", false}, {"/data/IMG", false},   {"/data/.IMG", true},
    };
    for (const auto &[file, accepted] : rows)
        EXPECT_EQ(browse_check_priority_ext(file, &state), accepted) << file;
    EXPECT_EQ(state.skipped_directory, "/D/");  // the skip rules were not asked
}

TEST(BrowseRules, SkipSoftwareOnlyWhileATimedWalkRuns) {
    BrowseState state;
    browse_settings().timed_browse_go = true;
    EXPECT_FALSE(browse_this_file("/cd/A\\SOFTWARE/x.lbl", &state));
    EXPECT_TRUE(browse_this_file("/cd/SOFTWARE/x.lbl", &state));
    browse_settings().timed_browse_go = false;
    EXPECT_TRUE(browse_this_file("/cd/A\\SOFTWARE/x.lbl", &state));
}

TEST(BrowseRules, SkipADirectoryUntilTheFirstFileElsewhere) {
    const std::tuple<const char *, const char *, const char *, bool> rows[] = {
        {"/D/x.lbl", "/D/", "/D/y.img", false},
        {"/D/x.lbl", "/D/", "/d/z.img", true},
        {"/D/x.lbl", "/D/", "/D/E/z.img", true},
        {"/D/x.lbl", "/D/", "/D/E\\z.img", true},
        {"/D/x.lbl", "/D/", "/D", true},          // shorter than the directory
        {"/D/x.lbl", "/D/", "/A/D/z.img", true},  // contains it, but what follows as many characters has a slash
        {"/d/x.lbl", "/D/", "/d/y.img", true},    // capitals are compared with what is not made so
        {"C:\\D/x.lbl", "C:\\D/", "C:\\D/y.img", false},
        {"/D\\x.lbl", "/D\\", "/D\\y.img", false},
        {"x.lbl", "", "y.img", true},
    };
    for (const auto &[skipped_by, directory, file, accepted] : rows) {
        BrowseState state;
        state.current_file = skipped_by;
        skip_directory_of_current(&state);
        EXPECT_EQ(state.skipped_directory, directory);
        EXPECT_EQ(browse_this_file(file, &state), accepted) << file;
        EXPECT_EQ(state.skipped_directory, accepted ? "" : directory) << file;
    }
}

TEST(BrowseRules, SkipExtensionsByTheirTextAnywhereInThoseSkipped) {
    BrowseState state;
    for (const char *file : {"/d/a.TAB", "/d/b.x.y", "/d/none"}) {
        state.current_file = file;
        skip_extension_of_current(&state);
    }
    EXPECT_EQ(state.skipped_extensions, ".TAB.x.y");
    const std::pair<const char *, bool> rows[] = {{"/d/c.TAB", false}, {"/d/c.T", false},     {"/d/c.tab", true},
                                                  {"/d/c.x", false},   {"/d/c.TAB.x", false}, {"/d/c.", false},
                                                  {"/d/c", true},      {"/d.e/c.TAB", true}};
    for (const auto &[file, accepted] : rows)
        EXPECT_EQ(browse_this_file(file, &state), accepted) << file;

    state.skipped_extensions.assign(996, '-');
    state.current_file = "/d/a.TAB";
    skip_extension_of_current(&state);
    EXPECT_EQ(state.skipped_extensions.size(), 996u);  // there is room for 999 characters
    state.current_file = "/d/a.GZ";
    skip_extension_of_current(&state);
    EXPECT_EQ(state.skipped_extensions.size(), 999u);

    BrowseState timed;
    skip_web_pages(&timed);
    EXPECT_EQ(timed.skipped_extensions, ".HTM.HTML.XML.SHTML.SHTM.STM.ASP.CSS.HTT");
}

TEST(BrowseRules, AdvanceOverWhatIsNoRegularFileOrSkipped) {
    const ScratchFolder scratch;
    scratch.write("a.lbl", "");
    scratch.write("b.skip", "");
    const std::string odd = scratch.write("c\x01  \xff d.img", "");
    std::filesystem::create_directory(scratch.path() / "e.dir");
    mkfifo(scratch.file("f.pipe").c_str(), 0600);
    std::filesystem::create_symlink("a.lbl", scratch.path() / "g.link");
    BrowseState state;
    state.skipped_extensions = ".skip";
    for (const char *name :
         {"absent.lbl", "a.lbl", "b.skip", "c\x01  \xff d.img", "e.dir", "f.pipe", "g.link", "h.lbl"})
        util_append_string_list(&state.files, scratch.file(name));
    ASSERT_TRUE(advance_to_next_file(&state));
    EXPECT_EQ(state.current_file, scratch.file("a.lbl"));
    ASSERT_TRUE(advance_to_next_file(&state));
    EXPECT_EQ(state.current_file, scratch.file("c d.img"));
    EXPECT_EQ(state.cursor->text, odd);
    ASSERT_TRUE(advance_to_next_file(&state));
    EXPECT_EQ(state.current_file, scratch.file("g.link"));
    EXPECT_FALSE(advance_to_next_file(&state));
    EXPECT_EQ(state.cursor->previous->previous->text, scratch.file("f.pipe"));
}

TEST(QuickLabelTest, LooksAtNamesAndFirstBytes) {
    const ScratchFolder scratch;
    const auto gap = [](size_t bytes) { return std::string(bytes, ' '); };
    const std::tuple<const char *, std::string, int> rows[] = {
        {"a.lbl", "", 1},
        {"a.LBL.old", "", 1},
        {"a.Lbl", "nothing", 0},
        {"version", "KRV_VERSION_ID = KRV3", 1},
        {"version far", "KRV_VERSION_ID =" + gap(64) + "KRV3", 1},  // 80 characters from its start
        {"version too far", "KRV_VERSION_ID =" + gap(65) + "KRV3", 0},
        {"version before", "KRV3 KRV_VERSION_ID KRV3 =", 0},
        {"object far", "OBJECT" + gap(74) + "=", 1},
        {"object too far", "OBJECT" + gap(75) + "=", 0},
        {"object later", "OBJECT" + gap(90) + "OBJECT = IMAGE", 0},  // the first one decides
        {"record", "x = 1\r\nRECORD_TYPE=STREAM", 1},
        {"behind zeros", std::string(100, '\0') + "RECORD_TYPE=STREAM", 1},
        {"last byte", std::string(2993, 'x') + "OBJECT=", 1},
        {"behind the last", std::string(2994, 'x') + "OBJECT=", 0},
        {"empty", "", 0},
    };
    for (const auto &[name, bytes, verdict] : rows)
        EXPECT_EQ(avalidate_label(scratch.write(name, bytes)), verdict) << name;
    EXPECT_EQ(avalidate_label(scratch.file("absent")), -1);
}

TEST(CleanNames, KeepWhatCanBePrinted) {
    const std::pair<std::string, std::string> rows[] = {
        {"plain name", "plain name"},
        {"\x01", " "},  // never the first character
        {"\x01\x02\n", " "},
        {"a\tb\r\n", "a b"},
        {"trailing \x7f\xff", "trailing "},
        {"\xc3\xa9t\xc3\xa9", "\xc3\xa9t\xc3\xa9"},
        {"cut \xe2\x82", "cut "},
        {"\xc0\xaf\xc2\x85\xed\xa0\x80.", "       ."},  // overlong, a control, a surrogate
        {"\xf0\x9f\x98\x80\xf4\x90\x80\x80", "\xf0\x9f\x98\x80"},
        {"", ""},
    };
    for (const auto &[text, clean] : rows)
        EXPECT_EQ(util_clean_up_string(text), clean);
    EXPECT_EQ(util_compress_char("  a   b ", ' '), " a b ");
    EXPECT_EQ(util_compress_char("//a//", '/'), "/a/");
    EXPECT_TRUE(util_string_is_empty("  "));
    EXPECT_FALSE(util_string_is_empty(" \t"));
}

}  // namespace
