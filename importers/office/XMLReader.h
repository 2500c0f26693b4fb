#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string_view>

namespace kelvo::importers {

/// The vocabularies that office documents consist of; both names of those that have an old and a new one.
enum class XMLSpace : std::uint8_t {
    none,
    other,
    contentTypes,
    relationships,         ///< parts of a package
    documentRelationships, ///< the attribute that names a part
    coreProperties,
    extendedProperties,
    dublinCore,
    dublinCoreTerms,
    compatibility,
    word,
    sheet,
    slides,
    drawing,
    math,
    office,
    text,
    table,
    draw,
    style,
    presentation,
    meta,
    svg,
    manifest
};

/// An element that somebody wants to hear of, by a number of his own, which is not 0.
struct XMLElement {
    XMLSpace space;
    std::string_view name;
    int number;
};

/// Of the element that begins.
class XMLAttributes {
public:
    /// Empty when there is none.
    virtual std::string_view value(XMLSpace space, std::string_view name) const = 0;

protected:
    ~XMLAttributes() = default;
};

class XMLHandler {
public:
    /// `element` is 0 for those that are not in the list. False: it is passed over with all that is in it.
    virtual bool startElement(int element, const XMLAttributes& attributes) = 0;
    virtual void endElement(int element) = 0;
    /// A piece of the characters between two tags, in UTF-8.
    virtual void characters(std::string_view text) = 0;
    /// Asked after each piece that is read. False ends the reading.
    virtual bool wantsMore() const { return true; }

protected:
    ~XMLHandler() = default;
};

/// Reads XML as it comes. Of markup that is there in several versions (mc:AlternateContent) only the first is read. What
/// declares entities is not read on, so that none is ever expanded, and neither is what is nested deeper than any
/// document.
class XMLReader {
public:
    /// Both must outlive this object.
    XMLReader(std::span<const XMLElement> elements, XMLHandler& handler);
    XMLReader(const XMLReader&) = delete;
    XMLReader& operator=(const XMLReader&) = delete;
    ~XMLReader();

    /// False when no more is to be read.
    bool read(std::string_view piece);
    /// After the last piece.
    void finish();

    /// Why it was not read to its end; null when it was, or the handler wanted no more.
    const char* fault() const;

private:
    class Parser;
    std::unique_ptr<Parser> parser_;
};

} // namespace kelvo::importers
