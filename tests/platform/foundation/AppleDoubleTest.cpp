#include "platform/foundation/AppleDouble.h"

#include <gtest/gtest.h>

namespace kelvo {
namespace {

struct Part {
    std::uint32_t id;
    std::size_t offset;
    std::string bytes;
};

std::string bytesOf(std::size_t value, std::size_t size) {
    std::string result(size, '\0');
    for (; size > 0; value >>= 8)
        result[--size] = static_cast<char>(value);
    return result;
}

std::string fileOf(const std::vector<Part>& parts) {
    std::string file =
        bytesOf(0x00051607, 4) + bytesOf(0x00020000, 4) + std::string(16, 'f') + bytesOf(parts.size(), 2);
    for (const Part& part : parts)
        file += bytesOf(part.id, 4) + bytesOf(part.offset, 4) + bytesOf(part.bytes.size(), 4);
    for (const Part& part : parts) {
        file.resize(std::max(file.size(), part.offset + part.bytes.size()), '-');
        file.replace(part.offset, part.bytes.size(), part.bytes);
    }
    return file;
}

TEST(AppleDoubleTest, ReplacesTheForkAndNothingElse) {
    const std::string info(32, 'i'), block(60, 'a');
    const struct {
        const char* name;
        std::vector<Part> before, after;
    } rows[] = {
        {"fork at the end", {{9, 50, info}, {2, 82, "old"}}, {{9, 50, info}, {2, 82, "fork"}}},
        {"a gap before it", {{9, 50, info}, {2, 90, "old"}}, {{9, 50, info}, {2, 90, "fork"}}},
        {"attributes stay in place", {{9, 50, block}, {2, 110, ""}}, {{9, 50, block}, {2, 110, "fork"}}},
        {"something after it",
         {{2, 62, "old"}, {4, 66, "note"}, {9, 70, info}},
         {{2, 104, "fork"}, {4, 66, "note"}, {9, 70, info}}},
        {"no fork, and room", {{9, 50, block}}, {{9, 50, block}, {2, 112, "fork"}}},
        {"no fork, and no room",
         {{9, 52, info}, {4, 84, "note"}},
         {{9, 64, info}, {4, 96, "note"}, {2, 100, "fork"}}},
        {"no fork, no room for attributes", {{9, 38, block}}, {}},
        {"nothing", {}, {{2, 40, "fork"}}},
        {"an entry in the header", {{4, 16, "note"}, {2, 82, "old"}}, {}},
    };
    for (const auto& [name, before, after] : rows) {
        SCOPED_TRACE(name);
        const auto file = AppleDouble::withData(NSData::dataWithBytes(fileOf(before)));
        ASSERT_TRUE(file);
        const NSData changed = file->dataByReplacingResourceFork(NSData::dataWithBytes("fork"));
        ASSERT_EQ(changed.isNil(), after.empty());
        if (changed.isNil())
            continue;
        std::string expected = fileOf(after);
        // What no entry names may be anything.
        for (std::size_t at = 0; at < std::min(expected.size(), changed.length()); ++at)
            expected[at] = expected[at] == '-' ? changed.characters()[at] : expected[at];
        EXPECT_EQ(changed.characters(), expected);
    }
}

TEST(AppleDoubleTest, BelievesNothing) {
    const std::string whole = fileOf({{9, 50, std::string(32, 'i')}, {2, 82, "fork"}});
    const struct {
        const char* name;
        std::size_t at;
        std::string patch;
        bool isHeader;
    } rows[] = {
        {"AppleSingle", 0, bytesOf(0x00051600, 4), false},
        {"another version", 4, bytesOf(0x00030000, 4), false},
        {"more entries than bytes", 24, bytesOf(6, 2), false},
        {"fork past the end", 46, bytesOf(5, 4), true},
        {"fork from past the end", 42, bytesOf(0xFFFFFFFF, 4), true},
        {"a length that wraps round", 46, bytesOf(0xFFFFFFFE, 4), true},
    };
    constexpr auto fork = AppleDouble::EntryID::resourceFork;
    EXPECT_EQ(AppleDouble::withData(NSData::dataWithBytes(whole))->entry(fork, 9).characters(), "fork");
    for (const auto& [name, at, patch, isHeader] : rows) {
        SCOPED_TRACE(name);
        const auto file =
            AppleDouble::withData(NSData::dataWithBytes(std::string(whole).replace(at, patch.size(), patch)));
        ASSERT_EQ(file.has_value(), isHeader);
        EXPECT_FALSE(isHeader && !file->entry(fork, 9).isNil());
        EXPECT_FALSE(isHeader && !file->dataByReplacingResourceFork(NSData::data()).isNil());
    }
    EXPECT_FALSE(AppleDouble::withData(NSData::dataWithBytes(whole.substr(0, 25))));
}

} // namespace
} // namespace kelvo
