#include "text/PathStrings.h"

#include "platform/foundation/NSMutableString.h"
#include "platform/foundation/NSPathUtilities.h"
#include "platform/foundation/Value.h"
#include "text/FoldingTables.h"
#include "text/SubstringSearch.h"
#include "text/UnicharCompare.h"

#include <algorithm>
#include <span>
#include <string_view>
#include <utility>
#include <vector>

namespace kelvo {

namespace {

constexpr std::u16string_view rootVolume = u"Root";
constexpr std::u16string_view volumesFolder = u"Volumes";

/// The names on the way, with those that ".." leads back over taken away. In a relative path the first names
/// may be "..".
class Way {
public:
    explicit Way(bool isAbsolute) : isAbsolute_(isAbsolute) {}

    void goTo(std::u16string_view name) { names_.push_back(name); }
    void goUp() {
        if (!names_.empty() && names_.back() != u"..")
            names_.pop_back();
        else if (!isAbsolute_)
            names_.emplace_back(u"..");
    }
    bool isAbsolute() const { return isAbsolute_; }
    const std::vector<std::u16string_view>& names() const { return names_; }

private:
    bool isAbsolute_;
    std::vector<std::u16string_view> names_;
};

template <class Use>
void forEachPart(std::u16string_view path, char16_t separator, Use use) {
    for (;;) {
        const std::size_t end = path.find(separator);
        use(path.substr(0, end), end == path.npos);
        if (end == path.npos)
            return;
        path.remove_prefix(end + 1);
    }
}

void appendName(NSMutableString& path, std::u16string_view name, char16_t separator, char16_t inName,
                char16_t instead) {
    if (!path.isEmpty() && path.characters().back() != separator)
        path.appendCharacter(separator);
    for (const char16_t unit : name)
        path.appendCharacter(unit == inName ? instead : unit);
}

Way wayOf(std::u16string_view path) {
    Way way(path.starts_with(u'/'));
    forEachPart(path, u'/', [&](std::u16string_view name, bool) {
        if (name == u"..")
            way.goUp();
        else if (!name.empty() && name != u".")
            way.goTo(name);
    });
    return way;
}

NSString joined(bool isAbsolute, std::span<const std::u16string_view> names) {
    NSMutableString path = NSMutableString::string();
    if (isAbsolute)
        path.appendCharacter(u'/');
    for (const std::u16string_view name : names) {
        if (!path.isEmpty() && path.characters().back() != u'/')
            path.appendCharacter(u'/');
        path.appendString(name);
    }
    if (path.isEmpty())
        path.appendCharacter(u'.');
    return path.takeString();
}

int compareMapped(std::u16string_view first, std::u16string_view second, const char16_t* table) {
    const std::size_t common = std::min(first.size(), second.size());
    for (std::size_t index = 0; index < common; ++index)
        if (const int difference = table[first[index]] - table[second[index]]; difference != 0)
            return difference;
    return first.size() == second.size() ? 0 : first.size() < second.size() ? -1 : 1;
}

} // namespace

bool isTemporaryPath(const NSString& path) {
    const std::u16string_view units = path;
    if (path.isNil())
        return false;
    return units.starts_with(u"/tmp") || units.starts_with(u"/var/tmp/") ||
           units.starts_with(NSTemporaryDirectory().characters()) ||
           (containsSubstring(units, u"/Library/Mail/") && containsSubstring(units, u".mimeattach") &&
            stringByAbbreviatingWithTildeInPath(path).characters().starts_with(u"~/Library/Mail/"));
}

NSMutableArray standardizedPathComponents(const NSString& path) {
    if (path.isNil())
        return nullptr;
    std::vector<Value> kept;
    for (const Value& value : pathComponents(path)) {
        const NSString component = value.string();
        if (component == u"..") {
            if (!kept.empty())
                kept.pop_back();
        } else if (!component.isEmpty() && component != u"." && (component != u"/" || kept.empty())) {
            kept.push_back(value);
        }
    }
    return NSMutableArray(NSArray::arrayWithValues(std::move(kept)));
}

NSString standardizedPath(const NSString& path) {
    if (path.isEmpty())
        return path;
    const Way way = wayOf(path);
    const NSString standardized = joined(way.isAbsolute(), way.names());
    return standardized == path ? path : standardized;
}

NSString relativePathToDirectory(const NSString& path, const NSString& directory) {
    if (path.isEmpty() || directory.isNil())
        return path;
    const Way to = wayOf(path), from = wayOf(directory);
    if (to.isAbsolute() != from.isAbsolute())
        return path;
    const auto [rest, above] =
        std::mismatch(to.names().begin(), to.names().end(), from.names().begin(), from.names().end());
    // The name of what lies below a folder that only ".." leads to is not in the text.
    if (std::find(above, from.names().end(), u"..") != from.names().end())
        return path;
    std::vector<std::u16string_view> names(static_cast<std::size_t>(from.names().end() - above), u"..");
    names.insert(names.end(), rest, to.names().end());
    return joined(false, names);
}

NSString stringByDeletingFileComponent(const NSString& path) {
    if (path.isEmpty())
        return path;
    const std::u16string_view units = path;
    std::size_t length = units.rfind(u'/') + 1;
    while (length > 1 && units[length - 1] == u'/')
        --length;
    return path.substringToIndex(length);
}

int compareWithLastPathComponent(const NSString& path, const NSString& other) {
    const NSString first = lastPathComponent(path), second = lastPathComponent(other);
    return fastCompareUnichars(first.characters().data(), first.length(), second.characters().data(),
                               second.length());
}

int caseInsensitiveCompareWithLastPathComponent(const NSString& path, const NSString& other) {
    return compareMapped(lastPathComponent(path), lastPathComponent(other), initUpperCharsTable());
}

int nonUmlautedCaseInsensitiveCompareWithLastPathComponent(const NSString& path, const NSString& other) {
    return compareMapped(lastPathComponent(path), lastPathComponent(other), initUpperUmlautsCharsTable());
}

NSString HFSPath(const NSString& path) {
    if (path.isEmpty())
        return path;
    const Way way = wayOf(path);
    std::span<const std::u16string_view> names = way.names();
    NSMutableString classic = NSMutableString::string();
    if (!way.isAbsolute()) {
        for (; !names.empty() && names.front() == u".."; names = names.subspan(1))
            classic.appendCharacter(u':');
    } else if (names.size() > 1 && names.front() == volumesFolder) {
        appendName(classic, names[1], u':', u':', u'/');
        names = names.subspan(2);
    } else {
        classic.appendString(rootVolume);
    }
    classic.appendCharacter(u':');
    for (const std::u16string_view name : names)
        appendName(classic, name, u':', u':', u'/');
    return classic.takeString();
}

NSString POSIXPath(const NSString& path) {
    const std::u16string_view units = path;
    if (units.starts_with(u'/') || units.find(u':') == units.npos)
        return path;
    const std::u16string_view volume = units.substr(0, units.find(u':'));
    Way way(!volume.empty());
    forEachPart(units.substr(volume.size() + 1), u':', [&](std::u16string_view name, bool isLast) {
        if (!name.empty())
            way.goTo(name);
        else if (!isLast)
            way.goUp();
    });
    NSMutableString result = NSMutableString::string();
    if (!volume.empty())
        result.appendCharacter(u'/');
    if (!volume.empty() && volume != rootVolume) {
        result.appendString(volumesFolder);
        appendName(result, volume, u'/', u'/', u':');
    }
    for (const std::u16string_view name : way.names())
        appendName(result, name, u'/', u'/', u':');
    if (result.isEmpty())
        result.appendCharacter(u'.');
    return result.takeString();
}

} // namespace kelvo
