#include "platform/appkit/documents/engine/FrozenMarkup.h"

#include <algorithm>
#include <cstddef>
#include <string_view>
#include <vector>

namespace kelvo::documentengine {
namespace {

constexpr std::size_t none = std::string_view::npos;

bool isSpace(char character) {
    return character == ' ' || character == '\t' || character == '\n' || character == '\r';
}

/// A piece of markup between "<" and ">", as places in the text.
struct Tag {
    std::size_t localName;
    std::size_t nameEnd;
    /// At the ">".
    std::size_t end;
    bool isEnd;
};

/// Goes from tag to tag; what looks like one within a comment or a section of characters is none.
class Tags {
public:
    explicit Tags(std::string_view text) : text_(text) {}

    /// False at the end of the text.
    bool next(Tag& tag) {
        for (;;) {
            const std::size_t start = text_.find('<', place_);
            if (start == none)
                return false;
            place_ = start + 1;
            if (skips("!--", "-->") || skips("![CDATA[", "]]>") || skips("?", "?>"))
                continue;
            // A declaration of entities may hold markup, which is looked at as if it stood by itself.
            if (text_.substr(place_).starts_with('!'))
                continue;
            tag.isEnd = place_ < text_.size() && text_[place_] == '/';
            tag.localName = place_ + (tag.isEnd ? 1 : 0);
            tag.nameEnd = std::min(text_.find_first_of(" \t\r\n/><", tag.localName), text_.size());
            const std::size_t colon = text_.substr(0, tag.nameEnd).find(':', tag.localName);
            if (colon != none)
                tag.localName = colon + 1;
            tag.end = endOfTag(tag.nameEnd);
            if (tag.end == none)
                return false;
            place_ = tag.end + 1;
            return true;
        }
    }

private:
    bool skips(std::string_view opening, std::string_view closing) {
        if (!text_.substr(place_).starts_with(opening))
            return false;
        const std::size_t end = text_.find(closing, place_ + opening.size());
        place_ = end == none ? text_.size() : end + closing.size();
        return true;
    }

    std::size_t endOfTag(std::size_t place) const {
        while ((place = text_.find_first_of("\"'>", place)) != none && text_[place] != '>') {
            place = text_.find(text_[place], place + 1);
            if (place == none)
                return none;
            ++place;
        }
        return place;
    }

    std::string_view text_;
    std::size_t place_ = 0;
};

std::string_view localNameOf(std::string_view text, const Tag& tag) {
    return text.substr(tag.localName, tag.nameEnd - tag.localName);
}

/// Where the value of the attribute of that local name stands; empty when there is none.
std::string_view attributeOf(std::string_view text, const Tag& tag, std::string_view name) {
    const std::string_view inside = text.substr(0, tag.end);
    std::size_t place = tag.nameEnd;
    for (;;) {
        const std::size_t opening = inside.find_first_of("\"'", place);
        const std::size_t closing = opening == none ? none : inside.find(inside[opening], opening + 1);
        if (closing == none)
            return {};
        std::string_view key = inside.substr(place, opening - place);
        const std::size_t equals = key.rfind('=');
        key = key.substr(0, equals == none ? 0 : equals);
        while (!key.empty() && isSpace(key.back()))
            key.remove_suffix(1);
        key.remove_prefix(std::min(key.size(), key.find_last_of(" \t\r\n/:") + 1));
        if (key == name)
            return inside.substr(opening + 1, closing - opening - 1);
        place = closing + 1;
    }
}

bool freezeOpenDocumentUnits(std::string& units) {
    constexpr std::string_view fileName = "file-name";
    constexpr std::string_view span = "span     ";
    constexpr std::string_view reload = "auto-reload";
    constexpr std::string_view unknown = "none-reload";
    static_assert(fileName.size() == span.size() && reload.size() == unknown.size());
    bool isChanged = false;
    Tag tag{};
    for (Tags tags(units); tags.next(tag);) {
        const std::string_view name = localNameOf(units, tag);
        if (name != fileName && name != reload)
            continue;
        std::ranges::copy(name == fileName ? span : unknown,
                          units.begin() + static_cast<std::ptrdiff_t>(tag.localName));
        isChanged = true;
    }
    return isChanged;
}

/// The first word of an instruction, which may come in pieces.
class Instruction {
public:
    void add(std::string_view text, std::size_t from, std::size_t to) {
        for (; from < to && !isWhole_; ++from) {
            const char character = text[from];
            const bool isBetween = isSpace(character) || character == '\\' || character == '"';
            if (isBetween || word_.size() > name.size()) {
                isWhole_ = !word_.empty();
                continue;
            }
            if (word_.empty())
                start_ = from;
            word_ += character >= 'a' && character <= 'z' ? static_cast<char>(character & ~0x20) : character;
        }
    }
    bool freezeIn(std::string& units) const {
        if (word_ != name)
            return false;
        units[start_] = 'X';
        return true;
    }

private:
    static constexpr std::string_view name = "FILENAME";

    std::string word_;
    std::size_t start_ = 0;
    bool isWhole_ = false;
};

bool freezeOfficeOpenXMLUnits(std::string& units) {
    bool isChanged = false;
    // Fields stand within the instructions of others.
    std::vector<Instruction> open;
    Tag tag{};
    for (Tags tags(units); tags.next(tag);) {
        const std::string_view name = localNameOf(units, tag);
        if (tag.isEnd)
            continue;
        if (name == "fldSimple") {
            const std::string_view value = attributeOf(units, tag, "instr");
            Instruction instruction;
            const auto start = static_cast<std::size_t>(value.data() - units.data());
            instruction.add(units, start, value.empty() ? start : start + value.size());
            isChanged |= instruction.freezeIn(units);
        } else if (name == "fldChar") {
            const std::string_view type = attributeOf(units, tag, "fldCharType");
            if (type == "begin") {
                open.emplace_back();
            } else if (!open.empty()) {
                isChanged |= open.back().freezeIn(units);
                if (type == "end")
                    open.pop_back();
            }
        } else if (name == "instrText" && !open.empty()) {
            open.back().add(units, tag.end + 1, std::min(units.find('<', tag.end), units.size()));
        }
    }
    return isChanged;
}

/// Has the work done on text in which every unit of UTF-16 is one character.
template <typename Work>
bool onUnits(std::string& xml, Work work) {
    const std::string_view start = std::string_view(xml).substr(0, 2);
    const bool isLittle = start == "\xFF\xFE" || start == std::string_view("<\0", 2);
    if (!isLittle && start != "\xFE\xFF" && start != std::string_view("\0<", 2))
        return work(xml);
    const std::size_t low = isLittle ? 0 : 1;
    std::string units;
    for (std::size_t place = 0; place + 1 < xml.size(); place += 2)
        units += xml[place + 1 - low] == 0 ? xml[place + low] : '\x7F';
    const std::string before = units;
    if (!work(units))
        return false;
    for (std::size_t index = 0; index < units.size(); ++index) {
        if (units[index] != before[index])
            xml[2 * index + low] = units[index];
    }
    return true;
}

} // namespace

bool freezeOpenDocument(std::string& xml) {
    return onUnits(xml, freezeOpenDocumentUnits);
}

bool freezeOfficeOpenXML(std::string& xml) {
    return onUnits(xml, freezeOfficeOpenXMLUnits);
}

} // namespace kelvo::documentengine
