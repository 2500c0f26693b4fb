#include "importers/structured/StructuredImport.h"

#include "importers/structured/JSONStrings.h"
#include "importers/structured/XMLStrings.h"
#include "importers/support/Texts.h"
#include "platform/foundation/NSData.h"
#include "platform/foundation/encodings/NSStringEncoding.h"
#include "platform/foundation/propertylists/NSPropertyListSerialization.h"

#include <algorithm>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace kelvo::importers {
namespace {

/// A tree of values takes a multiple of its file.
constexpr std::size_t mostBytesOfPropertyList = std::size_t{128} << 20;

NSData dataOf(std::string_view bytes) {
    return NSData::dataWithBytesNoCopy(
        std::span(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()), nullptr);
}

void setLines(Attributes& attributes, const StringLines& lines) {
    attributes.setText(stringOf(lines.text()).characters());
}

void noteIncomplete(Attributes& attributes, const char* fault) {
    if (fault)
        attributes.note(MDNoteIncomplete, (std::string("not all of the file is read: ") + fault).c_str());
}

/// What some kinds of property lists say of themselves.
void setFacts(Attributes& attributes, const Value& root) {
    constexpr std::pair<const char16_t*, const char*> facts[] = {
        {u"CFBundleIdentifier", "kMDItemCFBundleIdentifier"},
        {u"CFBundleShortVersionString", "kMDItemVersion"},
        {u"CFBundleName", "kMDItemTitle"},
        {u"PayloadDisplayName", "kMDItemTitle"},
        {u"PayloadDescription", "kMDItemDescription"},
        {u"URL", "kMDItemURL"},
    };
    if (!root.isDictionary())
        return;
    for (const auto& [key, name] : facts) {
        const Value& value = root.dictionary().objectForKey(key);
        if (value.isString())
            attributes.set(name, value.string());
    }
}

// Without recursion, although lists are not deep.
void addStringsOf(const Value& root, StringLines& lines) {
    struct Item {
        Value value;
        bool isKey;
    };
    std::vector<Item> open{{root, false}};
    while (!open.empty() && !lines.isFull()) {
        const Item item = std::move(open.back());
        open.pop_back();
        if (item.value.isString()) {
            if (item.isKey)
                lines.addKey(item.value.string().UTF8String());
            else
                lines.addString(item.value.string().UTF8String());
        } else if (item.value.isArray()) {
            const NSArray array = item.value.array();
            for (std::size_t index = array.count(); index-- > 0;)
                open.push_back({array.objectAtIndex(index), false});
        } else if (item.value.isDictionary()) {
            const NSDictionary dictionary = item.value.dictionary();
            const NSArray keys = dictionary.allKeys();
            for (std::size_t index = keys.count(); index-- > 0;) {
                open.push_back({dictionary.objectForKey(keys.objectAtIndex(index)), false});
                open.push_back({keys.objectAtIndex(index), true});
            }
        }
    }
}

void importPropertyList(Attributes& attributes) {
    const std::string_view file = attributes.file();
    if (file.size() > mostBytesOfPropertyList) {
        attributes.note(MDNoteUnsupported, "the property list is larger than is read");
        return;
    }
    NSString reason;
    const Value root =
        NSPropertyListSerialization::propertyListFromData_mutabilityOption_format_errorDescription(
            dataOf(file), NSPropertyListMutabilityOptions::immutable, nullptr, &reason);
    if (root.isNil() || file.empty()) {
        attributes.note(MDNoteBroken, ("the file is no property list: " + reason.UTF8String()).c_str());
        return;
    }
    setFacts(attributes, root);
    StringLines lines;
    addStringsOf(root, lines);
    setLines(attributes, lines);
}

void importJSON(Attributes& attributes, const Deadline& deadline) {
    std::string_view JSON = attributes.file();
    std::string transcoded;
    if (encodingOfByteOrderMark(JSON) != kCFStringEncodingInvalidId) {
        transcoded = stringWithMarkedData(dataOf(JSON), nullptr).UTF8String();
        JSON = transcoded;
    }
    if (!beginsLikeJSON(JSON)) {
        attributes.note(MDNoteBroken, "the file is no JSON");
        return;
    }
    StringLines lines;
    const char* const fault = addStringsOfJSON(JSON, lines, deadline);
    setLines(attributes, lines);
    noteIncomplete(attributes, fault);
}

void importXML(Attributes& attributes, const Deadline& deadline) {
    XMLStrings strings(attributes.contentType() == "org.opml.opml");
    const char* const fault = scanXML(attributes.file(), strings, deadline);
    if (!strings.hasElements()) {
        attributes.note(MDNoteBroken, "the file is no XML");
        return;
    }
    attributes.set("kMDItemTitle", stringOf(strings.title()));
    attributes.setText(stringOf(strings.text()).characters());
    noteIncomplete(attributes, fault);
}

} // namespace

void importStructured(Attributes& attributes) {
    constexpr std::string_view typesOfXML[] = {"public.xml",
                                               "public.rss",
                                               "public.xfd",
                                               "org.opml.opml",
                                               "com.topografix.gpx",
                                               "com.apple.scripting-definition",
                                               "com.sun.java-web-start",
                                               "com.adobe.xfdf",
                                               "org.khronos.collada.digital-asset-exchange",
                                               "com.microsoft.advanced-stream-redirector",
                                               "com.microsoft.windows-media-wmx",
                                               "com.microsoft.windows-media-wvx",
                                               "com.microsoft.windows-media-wax"};
    const Deadline deadline;
    const std::string_view type = attributes.contentType();
    // Those that nobody has declared have JSON or XML, which is easily told.
    const bool isDynamic = type.starts_with("dyn.");
    if (type == "public.json" || type == "public.ndjson" || (isDynamic && beginsLikeJSON(attributes.file())))
        importJSON(attributes, deadline);
    else if (isDynamic || std::ranges::find(typesOfXML, type) != std::end(typesOfXML))
        importXML(attributes, deadline);
    else
        importPropertyList(attributes);
}

} // namespace kelvo::importers
