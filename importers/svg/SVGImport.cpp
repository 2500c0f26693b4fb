#include "importers/svg/SVGImport.h"

#include "importers/archives/ArchiveReader.h"
#include "importers/support/DayText.h"
#include "importers/support/Texts.h"
#include "importers/svg/SVGLength.h"
#include "importers/xml/XMLScan.h"

#include <algorithm>
#include <map>
#include <utility>
#include <vector>

namespace kelvo::importers {
namespace {

constexpr std::size_t mostBytesUnpacked = std::size_t{256} << 20;
/// Of one title, or one fact of its metadata.
constexpr std::size_t longestFact = 65'536;

bool isBlank(std::string_view text) {
    return text.find_first_not_of(" \t\r\n") == text.npos;
}

class PictureReading final : public XMLEvents {
public:
    void beginElement(const XMLTag& tag) override {
        ++depth_;
        const std::string_view name = tag.localName();
        if (depth_ == 1) {
            isSVG_ = name == "svg";
            readSize(tag);
        }
        if (metadataDepth_ > 0) {
            beginMetadata(tag);
        } else if (name == "metadata") {
            metadataDepth_ = depth_;
        } else if ((name == "title" || name == "desc") && factDepth_ == 0) {
            // Those further in belong to parts of the picture, and are shown as one points at them.
            factDepth_ = depth_;
            fact_.clear();
        } else if (name == "text" || name == "foreignObject") {
            textDepth_ = textDepth_ == 0 ? depth_ : textDepth_;
            breakLine();
        } else if (name == "style" || name == "script") {
            silentDepth_ = silentDepth_ == 0 ? depth_ : silentDepth_;
        } else if (textDepth_ > 0 && (!tag.value("y").empty() || !tag.value("dy").empty() || name == "p" ||
                                      name == "div" || name == "br")) {
            breakLine();
        }
    }

    void endElement(std::string_view name) override {
        if (metadataDepth_ > 0)
            endMetadata();
        if (factDepth_ == depth_)
            endFact(XMLTag::localPart(name));
        for (std::size_t* const at : {&metadataDepth_, &textDepth_, &silentDepth_}) {
            if (*at == depth_)
                *at = 0;
        }
        --depth_;
    }

    void characters(std::string_view text) override {
        if (metadataDepth_ > 0 || factDepth_ > 0) {
            if (fact_.size() < longestFact)
                fact_ += text;
        } else if (textDepth_ > 0 && silentDepth_ == 0) {
            write(text);
        }
    }

    bool isSVG() const { return isSVG_; }

    void setAttributes(Attributes& attributes) const {
        if (width_ && height_) {
            attributes.setReal("kMDItemPixelWidth", *width_);
            attributes.setReal("kMDItemPixelHeight", *height_);
        }
        setFact(attributes, "kMDItemTitle", title_.empty() ? first("title") : title_);
        setFact(attributes, "kMDItemDescription", description_.empty() ? first("description") : description_);
        setFact(attributes, "kMDItemRights", first("rights"));
        setFact(attributes, "kMDItemIdentifier", first("identifier"));
        attributes.set("kMDItemAuthors", arrayOf(all("creator")));
        attributes.set("kMDItemContributors", arrayOf(all("contributor")));
        attributes.set("kMDItemPublishers", arrayOf(all("publisher")));
        attributes.set("kMDItemKeywords", arrayOf(all("subject")));
        attributes.set("kMDItemLanguages", arrayOf(all("language")));
        if (const auto date = dayOfText(trimmed(stringOf(first("date"))).characters()))
            attributes.setDate("kMDItemContentCreationDate", *date);
        attributes.setText(stringOf(text_).characters());
    }

private:
    static void setFact(Attributes& attributes, const char* name, const std::string& fact) {
        attributes.set(name, stringOf(fact));
    }

    void readSize(const XMLTag& tag) {
        width_ = pixelsOfSVGLength(tag.value("width"));
        height_ = pixelsOfSVGLength(tag.value("height"));
        const auto box = viewBoxOfText(tag.value("viewBox"));
        if (!box)
            return;
        // One that is missing follows from the other.
        const double ratio = box->width / box->height;
        const auto width = width_;
        if (!width_)
            width_ = height_ ? *height_ * ratio : box->width;
        if (!height_)
            height_ = width ? *width / ratio : box->height;
    }

    /// What is within a term of Dublin Core belongs to it, however deep: a creator is an agent with a title.
    void beginMetadata(const XMLTag& tag) {
        if (property_.empty() && tag.name().starts_with("dc:")) {
            property_ = tag.localName();
            propertyDepth_ = depth_;
        }
        fact_.clear();
    }

    void endMetadata() {
        if (!property_.empty() && !isBlank(fact_))
            facts_[property_].push_back(fact_);
        fact_.clear();
        if (propertyDepth_ == depth_) {
            property_.clear();
            propertyDepth_ = 0;
        }
    }

    void endFact(std::string_view name) {
        if (factDepth_ == 2 && !isBlank(fact_)) {
            std::string& known = name == "title" ? title_ : description_;
            if (known.empty())
                known = fact_;
        }
        fact_.clear();
        factDepth_ = 0;
    }

    void breakLine() {
        if (!text_.empty() && text_.back() != '\n')
            text_ += '\n';
        hasSpace_ = false;
    }

    void write(std::string_view text) {
        for (const char byte : text) {
            if (byte == ' ' || byte == '\t' || byte == '\r' || byte == '\n') {
                hasSpace_ = true;
                continue;
            }
            if (hasSpace_ && !text_.empty() && text_.back() != '\n')
                text_ += ' ';
            hasSpace_ = false;
            text_ += byte;
        }
    }

    std::vector<std::string> all(const std::string& property) const {
        const auto found = facts_.find(property);
        return found == facts_.end() ? std::vector<std::string>() : found->second;
    }
    std::string first(const std::string& property) const {
        const auto found = facts_.find(property);
        return found == facts_.end() ? std::string() : found->second.front();
    }

    bool isSVG_ = false;
    std::size_t depth_ = 0;
    // Where what is being read began; 0 when it is not.
    std::size_t metadataDepth_ = 0;
    std::size_t propertyDepth_ = 0;
    std::size_t factDepth_ = 0;
    std::size_t textDepth_ = 0;
    std::size_t silentDepth_ = 0;
    std::optional<double> width_;
    std::optional<double> height_;
    std::string property_;
    std::string fact_;
    std::map<std::string, std::vector<std::string>> facts_;
    std::string title_;
    std::string description_;
    std::string text_;
    bool hasSpace_ = false;
};

/// Absent when it is damaged, or too large to be a picture.
std::optional<std::string> unpacked(std::string_view file, const Deadline& deadline) {
    ArchiveReader archive(file, ArchiveReader::Kind::compressed, deadline);
    if (!archive.next())
        return std::nullopt;
    std::string bytes;
    for (std::string_view piece = archive.read(); !piece.empty(); piece = archive.read()) {
        if (bytes.size() + piece.size() > mostBytesUnpacked)
            return std::nullopt;
        bytes += piece;
    }
    return bytes;
}

} // namespace

void importSVG(Attributes& attributes) {
    const Deadline deadline;
    std::string_view file = attributes.file();
    std::optional<std::string> contents;
    if (file.starts_with("\x1F\x8B")) {
        contents = unpacked(file, deadline);
        file = contents ? std::string_view(*contents) : std::string_view();
    }
    PictureReading reading;
    const char* const fault = scanXML(file, reading, deadline);
    if (!reading.isSVG()) {
        attributes.note(MDNoteBroken, "the file is damaged, or no SVG");
        return;
    }
    reading.setAttributes(attributes);
    if (fault)
        attributes.note(MDNoteIncomplete, (std::string("not all of the picture is read: ") + fault).c_str());
}

} // namespace kelvo::importers
