#include "platform/appkit/NSFileWrapper.h"

#include "platform/foundation/NSException.h"
#include "platform/foundation/NSFileManager.h"
#include "platform/foundation/encodings/CFString.h"

#include <algorithm>

namespace kelvo {
namespace {

constexpr std::size_t maximumNameBytes = 255;
/// Room for a number that makes a name unique.
constexpr std::size_t maximumStemUnits = 60;

NSString foldedName(const NSString& name) {
    NSMutableString folded(name);
    CFStringFold(folded, kCFCompareCaseInsensitive);
    return folded.takeString();
}

/// The nearest name that a file can have.
NSString usableName(const NSString& wanted) {
    if (NSFileWrapper::isUsableFilename(wanted))
        return wanted;
    std::u16string units;
    for (const char16_t unit : wanted.characters())
        units.push_back(unit == u'/' || unit == 0 || (unit >= 0xD800 && unit < 0xE000) ? u'-' : unit);
    if (units.size() > 2 * maximumStemUnits)
        units.erase(maximumStemUnits, units.size() - 2 * maximumStemUnits);
    NSString name{std::u16string_view(units)};
    // 60 units are at most 180 bytes.
    if (!NSFileWrapper::isUsableFilename(name))
        name = NSString(
            std::u16string_view(units).substr(units.size() - std::min(units.size(), maximumStemUnits)));
    return NSFileWrapper::isUsableFilename(name) ? name : NSString(u"Unnamed");
}

/// "picture.png" and 2 give "picture-2.png".
NSString numberedName(const NSString& name, std::size_t number) {
    const std::u16string_view units = name.characters();
    const std::size_t dot = units.rfind(u'.');
    const bool hasExtension = dot != std::u16string_view::npos && dot > 0 && units.size() - dot <= 16;
    const std::u16string_view extension = hasExtension ? units.substr(dot) : std::u16string_view();
    const std::string digits = std::to_string(number);
    std::u16string_view stem = units.substr(0, units.size() - extension.size());
    for (;;) {
        std::u16string result(stem);
        result += u'-';
        result.append(digits.begin(), digits.end());
        result += extension;
        NSString numbered{std::u16string_view(result)};
        if (stem.empty() || NSFileWrapper::isUsableFilename(numbered))
            return numbered;
        stem.remove_suffix(1);
    }
}

} // namespace

bool NSFileWrapper::isUsableFilename(const NSString& name) {
    const auto bytes = NSFileManager::defaultManager().fileSystemRepresentationWithPath(name);
    return bytes && !bytes->empty() && bytes->size() <= maximumNameBytes && *bytes != "." && *bytes != ".." &&
           bytes->find('/') == std::string::npos;
}

std::shared_ptr<NSFileWrapper> NSFileWrapper::initRegularFileWithContents(const NSData& contents) {
    std::shared_ptr<NSFileWrapper> wrapper(new NSFileWrapper(Kind::regularFile));
    wrapper->contents_ = contents.isNil() ? NSData::data() : contents;
    return wrapper;
}

std::shared_ptr<NSFileWrapper> NSFileWrapper::initDirectory() {
    return std::shared_ptr<NSFileWrapper>(new NSFileWrapper(Kind::directory));
}

std::shared_ptr<NSFileWrapper> NSFileWrapper::initSymbolicLinkWithDestination(const NSString& destination) {
    std::shared_ptr<NSFileWrapper> wrapper(new NSFileWrapper(Kind::symbolicLink));
    wrapper->destination_ = destination;
    return wrapper;
}

std::shared_ptr<const NSFileWrapper> NSFileWrapper::fileWrapperForName(std::u16string_view name) const {
    const auto found = indexes_.find(NSString(name));
    return found == indexes_.end() ? nullptr : entries_[found->second].second;
}

bool NSFileWrapper::addEntry(const NSString& name, std::shared_ptr<const NSFileWrapper> child) {
    if (!indexes_.emplace(name, entries_.size()).second)
        return false;
    height_ = std::max(height_, child->height_ + 1);
    entries_.emplace_back(name, std::move(child));
    return true;
}

NSString NSFileWrapper::addFileWrapper(std::shared_ptr<const NSFileWrapper> child) {
    if (!child || !isDirectory())
        throw NSException(NSInvalidArgumentException, u"Only folders hold other files.");
    if (child->height_ + 1 > maximumDepth)
        throw NSException(NSInvalidArgumentException, u"The folders would be too deep.");
    for (; foldedCount_ < entries_.size(); ++foldedCount_)
        nextNumbers_.emplace(foldedName(entries_[foldedCount_].first), 2);
    const NSString wanted = usableName(child->preferredFilename_);
    NSString name = wanted;
    const auto [found, isFree] = nextNumbers_.emplace(foldedName(wanted), 2);
    if (!isFree) {
        std::size_t& number = found->second;
        do {
            name = numberedName(wanted, number++);
        } while (!nextNumbers_.emplace(foldedName(name), 2).second);
    }
    addEntry(name, std::move(child));
    foldedCount_ = entries_.size();
    return name;
}

bool operator==(const NSFileWrapper& left, const NSFileWrapper& right) {
    return left.kind_ == right.kind_ && left.preferredFilename_ == right.preferredFilename_ &&
           left.contents_ == right.contents_ && left.destination_ == right.destination_ &&
           left.entries_.size() == right.entries_.size() &&
           std::ranges::all_of(left.entries_, [&](const NSFileWrapper::Entry& entry) {
               const auto other = right.fileWrapperForName(entry.first);
               return other && (other == entry.second || *other == *entry.second);
           });
}

} // namespace kelvo
