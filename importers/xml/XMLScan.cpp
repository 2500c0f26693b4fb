#include "importers/xml/XMLScan.h"

#include "markup/MarkupDecoding.h"
#include "platform/foundation/NSData.h"
#include "platform/foundation/units/ASCII.h"

#include <expat.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <new>
#include <span>
#include <string>
#include <type_traits>

namespace kelvo::importers {
namespace {

constexpr std::size_t bytesAtOnce = std::size_t{64} << 10;
constexpr std::size_t deepestNesting = 10'000;
/// expat lets entities make a hundred times of a document.
constexpr std::size_t mostCharacters = std::size_t{256} << 20;
constexpr const char* late = "there was no time for all of it";
constexpr std::size_t longestDeclaration = 256;

/// What the declaration says; empty when it says nothing, or is not in ASCII.
std::string declaredEncoding(std::string_view bytes) {
    const std::string_view declaration = bytes.substr(0, std::min(bytes.find("?>"), longestDeclaration));
    const std::size_t name = declaration.find("encoding");
    if (!declaration.starts_with("<?xml") || name == declaration.npos)
        return {};
    const std::size_t start = declaration.find_first_of("\"'", name);
    if (start == declaration.npos)
        return {};
    const std::size_t end = declaration.find(declaration[start], start + 1);
    return end == declaration.npos
               ? std::string()
               : asciiLowerCased(std::string(declaration.substr(start + 1, end - start - 1)));
}

bool isKnownToExpat(std::string_view encoding) {
    constexpr std::string_view known[] = {"", "utf-8", "utf8", "utf-16", "iso-8859-1", "us-ascii"};
    return std::ranges::find(known, encoding) != std::end(known);
}

class Scan {
public:
    Scan(XMLEvents& events, const Deadline& deadline, const char* encoding)
        : events_(events), deadline_(deadline), parser_(XML_ParserCreate(encoding), XML_ParserFree) {
        if (!parser_)
            throw std::bad_alloc();
        XML_SetUserData(parser_.get(), this);
        XML_SetElementHandler(
            parser_.get(),
            [](void* self, const char* name, const char** attributes) {
                static_cast<Scan*>(self)->begin({name, attributes});
            },
            [](void* self, const char* name) {
                auto& scan = *static_cast<Scan*>(self);
                --scan.depth_;
                if (!scan.fault_)
                    scan.events_.endElement(name);
            });
        XML_SetCharacterDataHandler(parser_.get(), [](void* self, const char* text, int length) {
            static_cast<Scan*>(self)->characters({text, static_cast<std::size_t>(length)});
        });
    }

    const char* read(std::string_view bytes) {
        do {
            const std::string_view piece = bytes.substr(0, bytesAtOnce);
            bytes.remove_prefix(piece.size());
            if (XML_Parse(parser_.get(), piece.data(), static_cast<int>(piece.size()), bytes.empty()) !=
                XML_STATUS_OK)
                return fault_ ? fault_ : "it is not well-formed XML";
        } while (!bytes.empty());
        return nullptr;
    }

private:
    void begin(const XMLTag& tag) {
        if (++depth_ > deepestNesting)
            stop("its elements are nested too deeply");
        else if (deadline_.isOver())
            stop(late);
        if (!fault_)
            events_.beginElement(tag);
    }

    void characters(std::string_view text) {
        characterCount_ += text.size();
        if (characterCount_ > mostCharacters)
            stop("it is longer than is read");
        if (characterCount_ - charactersInTime_ > bytesAtOnce) {
            charactersInTime_ = characterCount_;
            if (deadline_.isOver())
                stop(late);
        }
        if (!fault_)
            events_.characters(text);
    }

    void stop(const char* fault) {
        fault_ = fault_ ? fault_ : fault;
        XML_StopParser(parser_.get(), XML_FALSE);
    }

    XMLEvents& events_;
    const Deadline& deadline_;
    std::unique_ptr<std::remove_pointer_t<XML_Parser>, decltype(&XML_ParserFree)> parser_;
    std::size_t depth_ = 0;
    std::size_t characterCount_ = 0;
    std::size_t charactersInTime_ = 0;
    const char* fault_ = nullptr;
};

} // namespace

std::string_view XMLTag::value(std::string_view localName) const {
    for (const char* const* each = attributes_; *each; each += 2) {
        if (localPart(*each) == localName)
            return each[1];
    }
    return {};
}

const char* scanXML(std::string_view bytes, XMLEvents& events, const Deadline& deadline) {
    if (isKnownToExpat(declaredEncoding(bytes)))
        return Scan(events, deadline, nullptr).read(bytes);
    const NSData data = NSData::dataWithBytesNoCopy(
        std::span(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()), nullptr);
    const NSString text = XmlExtensions::stringWithMarkupData_defaultEncoding(data, NSUTF8StringEncoding);
    return Scan(events, deadline, "UTF-8").read(text.UTF8String());
}

} // namespace kelvo::importers
