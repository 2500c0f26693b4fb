#include "importers/pages/HiddenElements.h"

#include "importers/pages/TagReader.h"
#include "markup/PlainTextTags.h"

#include <algorithm>
#include <array>
#include <initializer_list>
#include <optional>
#include <string>

namespace kelvo::importers {
namespace {

bool isOneOf(std::string_view name, std::initializer_list<std::string_view> names) {
    return std::ranges::find(names, name) != names.end();
}

/// The names are empty from some place on.
template <std::size_t count>
bool isOneOf(std::string_view name, const std::array<std::string_view, count>& names) {
    return !name.empty() && std::ranges::find(names, name) != names.end();
}

/// Browsers that run scripts and show frames see no markup in these.
bool isRaw(std::string_view name) {
    return isOneOf(name, {"title", "noscript", "iframe", "noframes", "noembed"});
}

/// What is in these is not shown, or only by browsers that do not know them.
bool isNeverShown(std::string_view name) {
    return isRaw(name) || isOneOf(name, {"template", "datalist", "audio", "video", "canvas", "annotation",
                                         "annotation-xml", "desc", "metadata"});
}

bool isVoid(std::string_view name) {
    return isOneOf(name, {"area", "base", "br", "col", "embed", "hr", "img", "input", "link", "meta", "param",
                          "source", "track", "wbr", "frame"});
}

/// What is behind the beginning of a declaration; absent when there is none of that.
std::optional<std::u16string_view> restOfDeclaration(std::u16string_view style, std::u16string_view begin) {
    for (std::size_t at = style.find(begin); at != style.npos; at = style.find(begin, at + 1)) {
        if (at == 0 || style[at - 1] == u';')
            return style.substr(at + begin.size());
    }
    return std::nullopt;
}

bool declares(std::u16string_view style, std::u16string_view declaration) {
    return restOfDeclaration(style, declaration).has_value();
}

/// To the left or upwards, by "left:-" or "top:-".
bool liesFarOff(std::u16string_view style, std::u16string_view begin) {
    constexpr std::size_t digitsOfThousand = 4;
    const auto rest = restOfDeclaration(style, begin);
    return rest && rest->size() >= digitsOfThousand &&
           rest->substr(0, digitsOfThousand).find_first_not_of(u"0123456789") == rest->npos;
}

/// Not displayed, not visible, or a thousand pixels and more to the left of the window or above it.
bool hidesByStyle(std::u16string_view written) {
    std::u16string style;
    for (const char16_t unit : written) {
        if (unit > u' ')
            style += asciiLowerCase(unit);
    }
    if (declares(style, u"display:none") || declares(style, u"visibility:hidden"))
        return true;
    return (declares(style, u"position:absolute") || declares(style, u"position:fixed")) &&
           (liesFarOff(style, u"left:-") || liesFarOff(style, u"top:-"));
}

bool hidesByAttributes(std::string_view name, std::u16string_view tag) {
    bool isOpen = false;
    TagReader reader(tag);
    for (TagAttribute attribute; reader.takeAttribute(attribute);) {
        if (attribute.name == "hidden" || (attribute.name == "style" && hidesByStyle(attribute.value)) ||
            (attribute.name == "class" && attribute.value == u"hidden"))
            return true;
        isOpen = isOpen || attribute.name == "open";
    }
    return name == "dialog" && !isOpen;
}

/// Begins or ends something that no paragraph goes on in.
bool isBlock(std::string_view name) {
    if (isOneOf(name, {"table", "caption", "tbody", "thead", "tfoot", "body", "html"}))
        return true;
    std::u16string units(name.begin(), name.end());
    switch (plainTextRuleOfTag(units.data(), units.size())) {
    case PlainTextRule::lineBreak:
        return name != "br";
    case PlainTextRule::paragraphBreak:
    case PlainTextRule::cell:
    case PlainTextRule::division:
    case PlainTextRule::heading:
    case PlainTextRule::preformatted:
        return true;
    default:
        return false;
    }
}

} // namespace

/// Elements whose end tags may be left out: they end at the next of some others, and with what they are in.
struct HiddenElements::OptionalEnd {
    std::array<std::string_view, 3> names;
    std::array<std::string_view, 6> nextNames;
    std::array<std::string_view, 4> containers;
};

constexpr HiddenElements::OptionalEnd HiddenElements::optionalEnds[] = {
    {{"p"}, {}, {}},
    {{"li"}, {"li"}, {"ul", "ol", "menu", "dir"}},
    {{"dt", "dd"}, {"dt", "dd"}, {"dl"}},
    {{"td", "th"}, {"td", "th", "tr", "tbody", "thead", "tfoot"}, {"table"}},
    {{"tr"}, {"tr", "tbody", "thead", "tfoot"}, {"table"}},
    {{"tbody", "thead", "tfoot"}, {"tbody", "thead", "tfoot"}, {"table"}},
};

bool HiddenElements::open(std::string_view name, std::u16string_view tag) {
    // Some pages hide all of themselves until a script shows them.
    if (name.empty() || isOneOf(name, {"html", "body"}) || isVoid(name))
        return false;
    const bool hasAttributes = tag.size() > name.size() + 2;
    if (!isNeverShown(name) && !((hasAttributes || name == "dialog") && hidesByAttributes(name, tag)))
        return false;
    isHidden_ = true;
    name_ = {nameBuffer_, name.copy(nameBuffer_, sizeof nameBuffer_)};
    isRaw_ = isRaw(name);
    const auto* const found = std::ranges::find_if(
        optionalEnds, [&](const OptionalEnd& each) { return isOneOf(name, each.names); });
    optionalEnd_ = found == std::end(optionalEnds) ? nullptr : found;
    depth_ = 1;
    containerDepth_ = 0;
    return true;
}

bool HiddenElements::passTag(std::string_view name, bool opens, bool closes) {
    if (isRaw_) {
        // A title that nobody ends does not swallow the page.
        isHidden_ = !(closes && name == name_) &&
                    !(name_ == "title" && (name == "body" || (closes && name == "head")));
    } else if (optionalEnd_ && endsWithout(name, opens, closes)) {
        isHidden_ = false;
    } else if (name == name_ && opens != closes) {
        depth_ = opens ? depth_ + 1 : depth_ - 1;
        isHidden_ = depth_ > 0;
    }
    return !isHidden_;
}

bool HiddenElements::endsWithout(std::string_view name, bool opens, bool closes) {
    if (optionalEnd_->containers[0].empty())
        return isBlock(name);
    if (isOneOf(name, optionalEnd_->containers)) {
        if (closes && containerDepth_ == 0)
            return true;
        if (opens != closes)
            containerDepth_ = opens ? containerDepth_ + 1 : containerDepth_ - 1;
        return false;
    }
    return containerDepth_ == 0 && isOneOf(name, optionalEnd_->nextNames);
}

} // namespace kelvo::importers
