#include "CommandRun.h"

#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

namespace kelvo::cli {
namespace {

using namespace std::string_literals;

class ImageCommandTest : public CommandTest {
protected:
    ImageCommandTest() {
        files.write("red.ppm", picture("\xFF\0\0"s));
        files.write("sub/red.pgm", picture("\xFF\0\0"s));
    }

    static std::string picture(const std::string& pixel) { return "P6 2 1 255\n" + pixel + pixel; }
};

TEST_F(ImageCommandTest, PicturesInTheFormOfTheirNames) {
    const std::tuple<const char*, int, std::string> rows[] = {
        {"out.tiff", 0, "II*"},
        {"out.TIF", 0, "II*"},
        {"out.png", 0, "\x89PNG"},
        {"out.jpg", 0, "\xFF\xD8\xFF"},
        {"out.JPEG", 0, "\xFF\xD8\xFF"},
        {"out.webp", 2, ""},
        {"out", 2, ""},
        {"png", 2, ""},
    };
    for (const auto& [name, status, beginning] : rows) {
        const Outcome outcome = plumwick({"image", "red.ppm", "-o", name});
        EXPECT_EQ(outcome.status, status) << name << outcome.errors;
        EXPECT_EQ(std::filesystem::exists(files.path(name)), status == 0) << name;
        EXPECT_EQ(status == 0 ? files.read(name).substr(0, beginning.size()) : "", beginning) << name;
        EXPECT_EQ(outcome.errors.find("as their name says") != std::string::npos, status == 2)
            << outcome.errors;
    }
    EXPECT_EQ(plumwick({"image", "red.ppm", "-o", "-"}).output, files.read("out.tiff"));
    const std::string json = plumwick({"image", "red.ppm", "--json", "-o", "out.png"}).output;
    const std::string written =
        "\"Thumbnail\":{\"bytes\":" + std::to_string(files.read("out.png").size()) + ",\"file\":\"out.png\"}";
    EXPECT_NE(json.find(written), std::string::npos) << json;
    EXPECT_EQ(plumwick({"image", "red.ppm", "red.ppm", "-o", "out.png"}).status, 2);
}

TEST_F(ImageCommandTest, SeveralFilesAreALineEach) {
    const Outcome outcome = plumwick({"image", "red.ppm", "text.zzz", "sub/red.pgm", "missing"});
    EXPECT_EQ(outcome.output, "red.ppm             2 × 1  PBM\nsub/red.pgm         2 × 1  PBM\n");
    EXPECT_EQ(outcome.status, 4);
    EXPECT_NE(outcome.errors.find("text.zzz: unsupported: it is no image"), std::string::npos)
        << outcome.errors;
    EXPECT_NE(outcome.errors.find("missing: cannot be read"), std::string::npos) << outcome.errors;
    const Outcome json = plumwick({"image", "--json", "red.ppm", "text.zzz"});
    EXPECT_TRUE(json.output.starts_with("{\"file\":\"red.ppm\",\"Properties\":{\"PixelWidth\":2"))
        << json.output;
    EXPECT_TRUE(json.output.ends_with("}\nnull\n")) << json.output;
    EXPECT_EQ(json.status, 1);
}

TEST_F(ImageCommandTest, WhatIsMissingStandsInTheLine) {
    // The second of two rows is not there.
    const std::string head =
        "BM\x46\0\0\0\0\0\0\0\x36\0\0\0"s + "\x28\0\0\0\2\0\0\0\2\0\0\0\1\0\x18\0"s + std::string(24, '\0');
    files.write("cut.bmp", head + "\0\0\xFF\0\0\xFF\0\0"s);
    const Outcome outcome = plumwick({"image", "cut.bmp", "red.ppm"});
    EXPECT_EQ(outcome.output, "cut.bmp         2 × 2  BMP  the image is damaged, and may not be whole\n"
                              "red.ppm         2 × 1  PBM\n");
    EXPECT_EQ(outcome.errors, "");
    EXPECT_EQ(outcome.status, 0);
}

TEST_F(ImageCommandTest, ThumbnailsIntoAFolder) {
    ASSERT_EQ(plumwick({"image", "red.ppm", "-o", "red.png"}).status, 0);
    const std::string original = files.read("red.png");
    const Outcome made =
        plumwick({"image", "-d", "new", "red.ppm", "sub/red.pgm", "red.png", "text.zzz", "red.ppm"});
    EXPECT_EQ(made.status, 1) << made.errors;
    EXPECT_EQ(entriesOf(files.path("new")),
              (std::vector<std::string>{"red 2.png", "red 3.png", "red 4.png", "red.png"}));
    EXPECT_TRUE(files.read("new/red.png").starts_with("\x89PNG"));
    // Where the files are themselves.
    files.write("red.png", original + "own");
    EXPECT_EQ(plumwick({"image", "-d", ".", "red.png", "red.ppm"}).status, 0);
    EXPECT_EQ(files.read("red.png"), original + "own");
    EXPECT_TRUE(std::filesystem::exists(files.path("red 2.png")));
    EXPECT_EQ(plumwick({"image", "-d", "text.zzz", "red.ppm"}).status, 4);
    EXPECT_EQ(plumwick({"image", "-d", "none/new", "red.ppm"}).status, 4);
    EXPECT_EQ(plumwick({"image", "-d", "new", "-o", "a.png", "red.ppm"}).status, 2);
}

/// The command on a terminal that answers the questions about its attributes so; the terminal's name is another.
Outcome onTerminal(const std::vector<std::string>& arguments, const TemporaryFolder& folder,
                   const std::string& answer, const char* name) {
    int terminal = -1;
    const std::string program = tests::builtProgram("plumwick");
    std::vector<char*> words{const_cast<char*>(program.c_str())};
    for (const std::string& argument : arguments)
        words.push_back(const_cast<char*>(argument.c_str()));
    words.push_back(nullptr);
    const pid_t child = forkpty(&terminal, nullptr, nullptr, nullptr);
    if (child == 0) {
        setenv("TERM", name, 1);
        if (chdir(folder.path().c_str()) == 0)
            execv(program.c_str(), words.data());
        _exit(127);
    }
    Outcome outcome{-1, "", ""};
    bool hasAnswered = false;
    char bytes[4096];
    for (;;) {
        const ssize_t count = read(terminal, bytes, sizeof bytes);
        if (count <= 0)
            break;
        outcome.output.append(bytes, static_cast<std::size_t>(count));
        if (!hasAnswered && outcome.output.find("\x1B[c") != std::string::npos) {
            hasAnswered = true;
            EXPECT_EQ(write(terminal, answer.data(), answer.size()), static_cast<ssize_t>(answer.size()));
        }
    }
    int status = 0;
    waitpid(child, &status, 0);
    close(terminal);
    outcome.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return outcome;
}

TEST_F(ImageCommandTest, ShownWhereTheTerminalCan) {
    ASSERT_EQ(plumwick({"image", "red.ppm"}).status, 0);
    struct Row {
        const char* name;
        std::string answer;
        const char* term;
        int status;
        const char* expected;
    };
    const char* const drawnSixel = "\x1BP0;1;0q\"1;1;2;1#0;2;100;0;0#0@@$-\x1B\\";
    const char* const drawnKitty = "\x1B_Ga=T,q=2,f=32,s=2,v=1,m=0;/wAA//8AAP8=\x1B\\";
    const Row rows[] = {
        {"sixel", "\x1B[?62;4;22c", "xterm", 0, drawnSixel},
        {"kitty", "\x1B_Gi=31;OK\x1B\\\x1B[?62;c", "xterm", 0, drawnKitty},
        {"both", "\x1B_Gi=31;OK\x1B\\\x1B[?62;4c", "xterm", 0, drawnKitty},
        {"neither", "\x1B[?64;14;22c", "xterm", 2, "draws no pictures"},
        {"neither, whatever its name", "\x1B[?62;22c", "xterm-kitty", 2, "draws no pictures"},
        {"silent", "", "xterm", 2, "draws no pictures"},
        {"silent, of a name", "", "xterm-kitty", 0, drawnKitty},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const Outcome outcome = onTerminal({"image", "--show", "red.ppm"}, files, row.answer, row.term);
        EXPECT_EQ(outcome.status, row.status);
        EXPECT_NE(outcome.output.find(row.expected), std::string::npos)
            << testing::PrintToString(outcome.output);
    }
    const Outcome piped = plumwick({"image", "--show", "red.ppm"});
    EXPECT_EQ(piped.status, 2);
    EXPECT_EQ(piped.errors, "plumwick: --show: standard output is no terminal\n");
    EXPECT_EQ(plumwick({"image", "--show", "--json", "red.ppm"}).status, 2);
}

} // namespace
} // namespace kelvo::cli
