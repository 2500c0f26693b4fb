#include "platform/postscript/PostScriptFile.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>

namespace kelvo {
namespace {

using namespace std::string_literals;

/// "EPS 10+20 0,0 30x40", with "page" before what is no box of the file's own; "none".
std::string describe(const std::string& bytes) {
    const auto file = PostScriptFile::read(NSData::dataWithBytes(bytes));
    if (!file)
        return "none";
    EXPECT_TRUE(rangeFits(file->program, bytes.size()));
    const NSRect page = file->page();
    std::ostringstream out;
    out << (file->isEncapsulated ? "EPS " : "PS ") << file->program.location << '+' << file->program.length
        << (file->boundingBox ? " " : " page ") << page.origin.x << ',' << page.origin.y << ' '
        << page.size.width << 'x' << page.size.height;
    return out.str();
}

/// What follows the kind and the place.
std::string boxOf(const std::string& comments) {
    const std::string all = describe("%!PS-Adobe-3.0 EPSF-3.0\n" + comments);
    return all.substr(all.find(' ', all.find('+')) + 1);
}

std::string number32(std::uint32_t value) {
    std::string bytes;
    for (int shift = 0; shift < 32; shift += 8)
        bytes.push_back(static_cast<char>(value >> shift));
    return bytes;
}

/// A program of 24 bytes between two previews.
std::string binaryFile(std::uint32_t begin, std::uint32_t length) {
    return "\xC5\xD0\xD3\xC6" + number32(begin) + number32(length) + number32(0) + number32(0) +
           number32(54) + number32(4) + "\xFF\xFF%!PS-Adobe-3.0 EPSF-3.0\nII*\0"s;
}

TEST(PostScriptFileTest, WhereTheProgramStands) {
    struct Row {
        const char* name;
        std::string bytes;
        const char* file;
    };
    const std::string program = "%!PS-Adobe-3.0\n";
    const Row rows[] = {
        {"nothing", "", "none"},
        {"text", "PS", "none"},
        {"plain", program, "PS 0+15 page 0,0 612x792"},
        {"without a version", "%!\nshowpage", "PS 0+11 page 0,0 612x792"},
        {"encapsulated", "%!PS-Adobe-3.0 EPSF-3.0\r", "EPS 0+24 page 0,0 612x792"},
        {"job language", "\x1B%-12345X@PJL SET COPIES=2\r\n" + program, "PS 28+15 page 0,0 612x792"},
        {"job language left", "\x1B%-12345X" + program, "PS 9+15 page 0,0 612x792"},
        {"end of the file before", "\x04" + program, "PS 1+15 page 0,0 612x792"},
        {"lines before", std::string(4095, ' ') + "\n" + program, "PS 4096+15 page 0,0 612x792"},
        {"too much before", std::string(4096, ' ') + "\n" + program, "none"},
        {"in a sentence", "It begins with %!PS then.", "none"},
        {"PDF", "%PDF-1.4\n%!PS-Adobe-3.0", "none"},
        {"PDF after other bytes", "\n\n%PDF-1.4\n%!PS-Adobe-3.0", "none"},
        {"PDF of the old kind", "%!PS-Adobe-3.0 PDF-1.4\n", "none"},
        {"binary", binaryFile(30, 24), "EPS 30+24 page 0,0 612x792"},
        {"binary, cut off", binaryFile(30, 4'000'000'000), "EPS 30+28 page 0,0 612x792"},
        {"binary, behind its end", binaryFile(4'000'000'000, 24), "none"},
        {"binary, at a preview", binaryFile(54, 4), "none"},
        {"binary, empty", binaryFile(30, 0), "none"},
        {"half a head", binaryFile(30, 24).substr(0, 29), "none"},
    };
    for (const Row& row : rows)
        EXPECT_EQ(describe(row.bytes), row.file) << row.name;
    EXPECT_FALSE(PostScriptFile::read(nullptr));
}

TEST(PostScriptFileTest, WhatTheCommentsSayOfItsSize) {
    const std::string atEnd = "%%BoundingBox: (atend)\n%%EndComments\n" + std::string(100'000, '-') + "\n";
    struct Row {
        const char* name;
        std::string comments;
        const char* box;
    };
    const char* const none = "page 0,0 612x792";
    const Row rows[] = {
        {"whole", "%%BoundingBox: 10 20 110 220\n", "10,20 100x200"},
        {"CR", "%%Title: x\r%%BoundingBox:10 20 110 220\r%%EndComments\r", "10,20 100x200"},
        {"CR LF", "%%Title: x\r\n%%BoundingBox:\t10  20 110 220\r\n", "10,20 100x200"},
        {"at the end of the file", "%%BoundingBox: 10 20 110 220", "10,20 100x200"},
        {"below zero", "%%BoundingBox: -10 -20 110.5 +220 more\n", "-10,-20 120.5x240"},
        {"the finer", "%%HiResBoundingBox: 0.5 0.5 9 9.25\n%%BoundingBox: 0 0 10 10\n", "0.5,0.5 8.5x8.75"},
        {"the finer is none", "%%BoundingBox: 0 0 10 10\n%%HiResBoundingBox: 0 0 0 0\n", "0,0 10x10"},
        {"the first", "%%BoundingBox: 0 0 1 1\n%%BoundingBox: 0 0 2 2\n", "0,0 1x1"},
        {"after the comments", "%%EndComments\n%%BoundingBox: 0 0 1 1\n", none},
        {"of a file in the file", "%%Title: x\nsave\n%%BoundingBox: 0 0 1 1\n", none},
        {"empty", "%%BoundingBox:\n", none},
        {"of no size", "%%BoundingBox: 5 5 5 9\n", none},
        {"inside out", "%%BoundingBox: 10 10 0 0\n", none},
        {"three numbers", "%%BoundingBox: 0 0 1\n", none},
        {"no numbers", "%%BoundingBox: nan nan nan nan\n", none},
        {"without end", "%%BoundingBox: -inf 0 inf 1\n", none},
        {"beyond all paper", "%%BoundingBox: 0 0 1e9 10\n", none},
        {"far away", "%%BoundingBox: 1e30 0 1e30 10\n", none},
        {"no number after all", "%%BoundingBox: 0 0 10 10x\n", none},
        {"at the end", atEnd + "%%Trailer\n%%BoundingBox: 0 0 3 4\n", "0,0 3x4"},
        {"the last at the end", atEnd + "%%Trailer\r%%BoundingBox: 0 0 3 4\r%%BoundingBox: 0 0 5 6\r%%EOF",
         "0,0 5x6"},
        {"that of the last trailer", atEnd + "%%Trailer\n%%BoundingBox: 0 0 3 4\n%%Trailer\n", none},
        {"promised", atEnd, none},
        {"media", "%%DocumentMedia: A4 595 842 80 white ()\n", "page 0,0 595x842"},
        {"media without a size", "%%DocumentMedia: A4 0 0\n", none},
        {"page", "%%EndComments\n%%Page: 1 1\n%%PageBoundingBox: 1 2 11 12\n", "1,2 10x10"},
        {"box before media", "%%DocumentMedia: A4 595 842\n%%BoundingBox: 0 0 10 10\n", "0,0 10x10"},
        {"media before page", "%%PageBoundingBox: 1 2 11 12\n%%DocumentMedia: A4 595 842\n",
         "page 0,0 595x842"},
    };
    for (const Row& row : rows)
        EXPECT_EQ(boxOf(row.comments), row.box) << row.name;
}

} // namespace
} // namespace kelvo
