#include "platform/webkit/WebArchive.h"
#include "platform/foundation/propertylists/NSPropertyListSerialization.h"

#include <gtest/gtest.h>

namespace kelvo {
namespace {

using Dictionary = NSMutableDictionary;

Dictionary dictionary(std::initializer_list<Dictionary::Pair> pairs) {
    return Dictionary::dictionaryWithObjectsAndKeys(pairs);
}

NSData bytes(std::string_view text) {
    return NSData::dataWithBytes(text);
}

NSData written(const Value& root, NSPropertyListFormat format = NSPropertyListBinaryFormat_v1_0) {
    return NSPropertyListSerialization::dataFromPropertyList_format_errorDescription(root, format, nullptr);
}

Dictionary page(const char* text, const char16_t* address = u"http://h/") {
    return dictionary({{bytes(text), u"WebResourceData"},
                       {u"text/html", u"WebResourceMIMEType"},
                       {address, u"WebResourceURL"},
                       {u"utf-8", u"WebResourceTextEncodingName"},
                       {u"", u"WebResourceFrameName"}});
}

NSArray list(std::initializer_list<Value> elements) {
    return NSArray::arrayWithObjects(elements);
}

/// The documents of the archive and its frames, each before those within it, with the depth before each.
std::string outline(const WebArchive& archive, int depth = 0) {
    std::string text =
        std::to_string(depth) + std::string(archive.mainResource().data().characters().substr(0, 8)) + " ";
    for (const WebArchive& frame : archive.subframeArchives())
        text += outline(frame, depth + 1);
    return text;
}

TEST(WebArchiveTest, ReadsBothForms) {
    const Dictionary inner = dictionary({{page("inner"), u"WebMainResource"}});
    const Dictionary first =
        dictionary({{page("first"), u"WebMainResource"}, {list({inner}), u"WebSubframeArchives"}});
    const Dictionary second = dictionary({{page("second"), u"WebMainResource"}});
    const Dictionary root = dictionary({
        {page("main", u"http://h/a b"), u"WebMainResource"},
        {list({page("style"), page("image")}), u"WebSubresources"},
        {list({first, second}), u"WebSubframeArchives"},
        {u"kept out", u"SomeOtherKey"},
    });
    for (const NSPropertyListFormat format :
         {NSPropertyListBinaryFormat_v1_0, NSPropertyListXMLFormat_v1_0}) {
        const WebArchive archive = WebArchive::initWithData(written(root, format));
        EXPECT_EQ(outline(archive), "0main 1first 2inner 1second ");
        const WebResource document = archive.mainResource();
        EXPECT_EQ(document.URL().absoluteString(), u"http://h/a%20b");
        EXPECT_EQ(document.MIMEType(), u"text/html");
        EXPECT_EQ(document.textEncodingName(), u"utf-8");
        EXPECT_EQ(document.frameName(), u"");
        ASSERT_EQ(archive.subresources().size(), 2u);
        EXPECT_EQ(archive.subresources()[1].data(), bytes("image"));
    }
    const NSData old = written(root, NSPropertyListOpenStepFormat);
    EXPECT_TRUE(WebArchive::initWithData(old).isNil() && WebArchive().mainResource().data().isNil());
    EXPECT_TRUE(WebArchive().subframeArchives().empty());
}

TEST(WebArchiveTest, PassesOverWhatIsInvalid) {
    const auto with = [](Value value, const char16_t* key) {
        Dictionary changed = page("x");
        changed.setObject_forKey(value, key);
        return changed;
    };
    const NSNumber number = NSNumber::numberWithInt(1);
    const std::tuple<const char*, Value, bool> rows[] = {
        {"whole", page("x"), true},
        {"empty", Dictionary::dictionary(), true},
        {"text for a dictionary", u"x", false},
        {"number as data", with(number, u"WebResourceData"), false},
        {"number as address", with(number, u"WebResourceURL"), false},
        {"data as type", with(bytes("text/html"), u"WebResourceMIMEType"), false},
        {"array as charset", with(list({}), u"WebResourceTextEncodingName"), false},
        {"number as frame name", with(number, u"WebResourceFrameName"), false},
        {"anything as response", with(number, u"WebResourceResponse"), true},
    };
    const Dictionary frame = dictionary({{page("frame"), u"WebMainResource"}});
    for (const auto& [name, resource, isValid] : rows) {
        const WebArchive archive = WebArchive::initWithData(
            written(dictionary({{resource, u"WebMainResource"},
                                {list({resource, page("last")}), u"WebSubresources"},
                                {list({u"no frame", frame}), u"WebSubframeArchives"}})));
        EXPECT_EQ(archive.mainResource().isNil(), !isValid) << name;
        EXPECT_EQ(archive.subresources().size(), isValid ? 2u : 1u) << name;
        ASSERT_EQ(archive.subframeArchives().size(), 1u) << name;
        EXPECT_EQ(outline(archive.subframeArchives()[0]), "0frame ") << name;
    }
    Dictionary text = with(u"\u00FC", u"WebResourceData");
    text.setObject_forKey(u"latin1", u"WebResourceTextEncodingName");
    text.setObject_forKey(u"no address", u"WebResourceURL");
    const WebResource resource =
        WebArchive::initWithData(written(dictionary({{text, u"WebMainResource"}}))).mainResource();
    EXPECT_EQ(resource.data(), bytes("\xC3\xBC"));
    EXPECT_EQ(resource.textEncodingName(), u"UTF-8");
    EXPECT_TRUE(resource.URL().isNil());
}

TEST(WebArchiveTest, AnythingElseIsNil) {
    for (const NSData& data :
         {NSData(), NSData::data(), bytes("<html><body>x</body></html>"), bytes("bplist00"),
          bytes("{ WebMainResource = x; }"), written(u"x"), written(dictionary({{u"x", u"CFBundleName"}})),
          written(list({dictionary({{page("x"), u"WebMainResource"}})}))})
        EXPECT_TRUE(WebArchive::initWithData(data).isNil()) << data.characters();
}

TEST(WebArchiveTest, NestsAsDeepAsAPropertyList) {
    // Written out by hand: our own writer refuses the deeper one.
    const auto nested = [](std::size_t depth) {
        std::string xml = "<plist><dict>", end = "</dict></plist>";
        for (std::size_t level = 0; level < depth; ++level) {
            xml += "<key>WebSubframeArchives</key><array><dict>";
            end.insert(0, "</dict></array>");
        }
        return bytes(
            xml + "<key>WebMainResource</key><dict><key>WebResourceData</key><data>eA==</data></dict>" + end);
    };
    const WebArchive deepest = WebArchive::initWithData(nested(WebArchive::maximumFrameDepth));
    EXPECT_NE(outline(deepest).find(" 255x "), std::string::npos);
    EXPECT_TRUE(WebArchive::initWithData(nested(WebArchive::maximumFrameDepth + 1)).isNil());
    EXPECT_TRUE(WebArchive::initWithData(nested(10000)).isNil());
}

/// A binary property list of these objects, of which the first is the root; references take one byte. Our own
/// writer shares nothing.
NSData binaryList(const std::vector<std::string>& objects) {
    std::string list = "bplist00", offsets;
    const auto bigEndian = [](std::size_t number, int size) {
        std::string text;
        while (size-- > 0)
            text += static_cast<char>(number >> (8 * size));
        return text;
    };
    for (const std::string& object : objects) {
        offsets += bigEndian(list.size(), 8);
        list += object;
    }
    return bytes(list + offsets + std::string(6, '\0') + "\x08\x01" + bigEndian(objects.size(), 8) +
                 bigEndian(0, 8) + bigEndian(list.size(), 8));
}

TEST(WebArchiveTest, SharedDocumentsAreBounded) {
    const WebArchive archive = WebArchive::initWithData(binaryList({
        "\xD1\x01\x02",
        "\x5F\x10\x13WebSubframeArchives",
        "\xAF\x10\x64" + std::string(100, '\3'),
        "\xD1\x04\x05",
        "\x5F\x10\x0FWebMainResource",
        "\xD1\x06\x07",
        "\x5F\x10\x0FWebResourceData",
        "\x4F\x11\xC3\x50" + std::string(50'000, 'x'),
    }));
    ASSERT_EQ(archive.subframeArchives().size(), 100u);
    std::size_t total = 0;
    for (const WebArchive& frame : archive.subframeArchives())
        total += frame.mainResource().data().length();
    EXPECT_EQ(total, 1'000'000u) << "the last one that fits into a mebibyte";
}

TEST(WebArchiveTest, SharedFramesAreBounded) {
    const std::string many = "\xAF\x11\x01\x2C";
    const WebArchive archive = WebArchive::initWithData(binaryList({
        "\xD1\x01\x02",
        "\x5F\x10\x13WebSubframeArchives",
        many + std::string(300, '\3'),
        "\xD1\x01\x04",
        many + std::string(300, '\5'),
        std::string("\xD0"),
        // Makes the file large enough for so many shared objects to be believed.
        "\x4F\x11\xC3\x50" + std::string(50'000, 'x'),
    }));
    std::size_t count = archive.subframeArchives().size();
    for (const WebArchive& frame : archive.subframeArchives())
        count += frame.subframeArchives().size();
    EXPECT_EQ(count, WebArchive::maximumFrameCount);
}

} // namespace
} // namespace kelvo
