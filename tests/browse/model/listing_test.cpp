// Lists of files by the shell's find: directories of any name, names of any bytes, the scratch file.
#include "browse/model/listing.h"

#include "support/scratch.h"

#include <gtest/gtest.h>

#include <set>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

// As the listing dialog runs it, in `folder`.
void run_shell(const std::string &folder, const std::string &command) {
    const pid_t shell = fork();
    if (shell == 0) {
        setenv("LC_ALL", "C", 1);
        if (chdir(folder.c_str()) == 0)
            execl("/bin/sh", "sh", "-C", "-c", command.c_str(), nullptr);
        _exit(127);
    }
    waitpid(shell, nullptr, 0);
}

std::set<std::string> list_files(const ScratchFolder &working, const std::string &pattern) {
    const ListingCommand command = listing_command(pattern);
    ScratchList scratch(working.path().string());
    EXPECT_TRUE(scratch.remove());
    run_shell(working.path().string(), command.shell);
    StringList list;
    EXPECT_TRUE(scratch.read(command.prefix, &list));
    std::set<std::string> files;
    for (const StringListEntry *entry = list.head; entry; entry = entry->next)
        files.insert(entry->text);
    return files;
}

TEST(ListingCommand, IsWordedPlainlyForPlainNames) {
    const std::tuple<const char *, const char *, const char *> rows[] = {
        {"/data/A-1_b.c/*.*", "find /data/A-1_b.c -name \"*.*\" -print > lumacart.jnk", "/data/A-1_b.c/"},
        {"*.*", "find . -name \"*.*\" -print > lumacart.jnk", "./"},
        {"//*.*", "find / -name \"*.*\" -print > lumacart.jnk", "/"},
        {"/*.*", "find / -name \"*.*\" -print > lumacart.jnk", "/"},
        {"/a b/*.*", "find '/a b' -name \"*.*\" -print > lumacart.jnk", "/a b/"},
        {"/it's/*.*", "find '/it'\\''s' -name \"*.*\" -print > lumacart.jnk", "/it's/"},
        {"-delete/*.*", "find ./-delete -name \"*.*\" -print > lumacart.jnk", "./-delete/"},
        {"!/*.*", "find './!' -name \"*.*\" -print > lumacart.jnk", "./!/"},
        {"/d/$(x).*", "find /d -name '$(x).*' -print > lumacart.jnk", "/d/"},
    };
    for (const auto &[pattern, shell, prefix] : rows) {
        EXPECT_EQ(listing_command(pattern).shell, shell);
        EXPECT_EQ(listing_command(pattern).prefix, prefix);
    }
}

TEST(ListingCommand, TakesNoDirectoryForAnythingButAName) {
    const ScratchFolder working, tree;
    for (const std::string name : {"a b", "it's", "\"x\"", "$(touch ran)", "`touch ran`", "; touch ran #", "$HOME", "*",
                                   "~", "-delete", "a\nb", "\n\n", "x.y\n", "caf\xe9.d", "\\", "a>b", "&", "(", "!"}) {
        const std::filesystem::path directory = tree.path() / name;
        std::filesystem::create_directories(directory / "sub");
        tree.write(name + "/one.lbl", "");
        tree.write(name + "/sub/two.img", "");
        tree.write(name + "/none", "");
        std::set<std::string> files = list_files(working, directory.string() + "/*.*");
        files.erase(directory.string());
        EXPECT_EQ(files, (std::set<std::string>{directory.string() + "/one.lbl", directory.string() + "/sub/two.img"}))
            << name;
        EXPECT_TRUE(std::filesystem::exists(directory / "one.lbl"));
    }
    EXPECT_FALSE(std::filesystem::exists(working.path() / "ran"));
}

TEST(ScratchList, KeepsNamesOfAnyBytesButLineFeeds) {
    const ScratchFolder working, tree;
    const std::string long_name = std::string(250, 'n') + ".lbl";
    std::string deep = "d";
    for (int level = 0; level < 10; ++level)
        deep += "/" + std::string(200, 'd');
    std::filesystem::create_directories(tree.path() / deep);
    std::set<std::string> expected;
    for (const std::string &name : {std::string("  two  blanks .lbl "), std::string("\xff\x01\r\t.img"), long_name,
                                    deep + "/" + long_name, std::string("-x.lbl"), std::string("...")})
        expected.insert(tree.write(name, ""));
    for (const char *name : {"one.\ntwo.lbl", "three.\n\nfour.lbl", "five.lbl\n", "\n.six"})
        tree.write(name, "");
    EXPECT_EQ(list_files(working, tree.path().string() + "/*.*"), expected);
}

TEST(ScratchList, IsNeverAnotherFileThanTheShellMade) {
    const ScratchFolder working, tree;
    tree.write("a.lbl", "");
    const std::string precious = working.write("precious", "data");
    const std::string name = working.file("lumacart.jnk");
    const std::string pattern = tree.path().string() + "/*.*";

    std::filesystem::create_symlink(precious, name);  // left there before
    EXPECT_EQ(list_files(working, pattern).size(), 1u);
    EXPECT_FALSE(std::filesystem::exists(name));  // removed with the record
    ScratchList scratch(working.path().string());
    StringList list;
    std::filesystem::create_symlink(precious, name);  // planted once it is made sure that there is none
    run_shell(working.path().string(), listing_command(pattern).shell);
    EXPECT_FALSE(scratch.read("/", &list));
    EXPECT_TRUE(scratch.remove());
    std::filesystem::create_hard_link(precious, name);
    EXPECT_FALSE(scratch.read("/", &list));
    EXPECT_TRUE(scratch.remove());
    EXPECT_EQ(read_file(precious), "data");

    std::filesystem::create_directory(name);
    EXPECT_FALSE(scratch.remove());
    std::filesystem::remove(name);
    EXPECT_FALSE(ScratchList(working.file("absent")).read("/", &list));
    EXPECT_FALSE(list.head);

    std::ofstream writing(name);  // taken while it is written
    EXPECT_TRUE(scratch.take());
    EXPECT_FALSE(std::filesystem::exists(name));
    writing << "/a.lbl\n/b.lbl\n" << std::flush;
    EXPECT_TRUE(scratch.read("/", &list));
    ASSERT_TRUE(list.tail);
    EXPECT_EQ(list.tail->text, "/b.lbl");
}

}  // namespace
