#include "platform/appkit/documents/engine/ZipCopy.h"

#include "support/ZipPackage.h"

#include <gtest/gtest.h>

namespace kelvo::documentengine {
namespace {

bool replaceOld(std::string& contents) {
    const std::size_t place = contents.find("old");
    if (place == std::string::npos)
        return false;
    contents.replace(place, 3, "longer");
    return true;
}

std::string changed(std::string zip) {
    changeXMLInZip(zip, replaceOld);
    return zip;
}

TEST(ZipCopyTest, ChangesXMLAndNothingElse) {
    const std::string zip = tests::zipPackage({{"a.txt", "old"}, {"a.xml", "<old/>"}, {"b/c.xml", "<old/>"}});
    EXPECT_EQ(changed(zip),
              tests::zipPackage({{"a.txt", "old"}, {"a.xml", "<longer/>"}, {"b/c.xml", "<longer/>"}}));
    const std::string other = tests::zipPackage({{"a.txt", "old"}, {"a.xml", "<new/>"}}) + "a comment";
    EXPECT_EQ(changed(other), other) << "left as it is where nothing changes";
}

TEST(ZipCopyTest, FactsThatFollowAnEntryStandBeforeItInTheCopy) {
    // The flag in the local header and in the directory.
    std::string zip = tests::zipPackage({{"a.xml", "<old/>"}});
    const std::string expected = changed(zip);
    zip[6] = zip[zip.find("PK\1\2") + 8] = '\x08';
    EXPECT_EQ(changed(zip), expected);
}

TEST(ZipCopyTest, WhatIsNotWholeIsLeftAlone) {
    const std::string zip = tests::zipPackage({{"a.xml", "<old/>"}, {"b.txt", "x"}});
    for (std::size_t length = 0; length < zip.size(); ++length)
        EXPECT_EQ(changed(zip.substr(0, length)), zip.substr(0, length)) << length;
    const std::size_t record = zip.find("PK\1\2");
    const std::tuple<const char*, std::size_t, char> rows[] = {
        {"encrypted", record + 8, 1},
        {"compressed in an unknown way", record + 10, 99},
        {"not what it says", record + 10, 8},
        {"longer than the file", record + 21, 1},
        {"from beyond the end", record + 45, 1},
        {"from where no entry is", record + 42, 1},
    };
    for (const auto& [name, place, value] : rows) {
        std::string broken = zip;
        broken[place] = value;
        EXPECT_EQ(changed(broken), broken) << name;
    }
    // Every number, pointing anywhere.
    for (std::size_t place = 0; place + 4 <= zip.size(); ++place) {
        std::string broken = zip;
        broken.replace(place, 4, 4, '\xFF');
        changed(broken);
    }
}

} // namespace
} // namespace kelvo::documentengine
