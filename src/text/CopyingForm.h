#pragma once

#include "platform/foundation/NSException.h"
#include "platform/foundation/NSMutableString.h"
#include "platform/foundation/NSString.h"

#include <algorithm>
#include <cstddef>
#include <string_view>

namespace kelvo {

// What the members of the string family are made with. A member never throws: a string that would grow past
// maximumSizeInBytes stays as it is.

/// The copying form of a member that changes a string in place: the receiver itself when it is nil or empty
/// and when nothing changed.
template <class Change>
NSString copyChangedBy(const NSString& receiver, Change change) {
    if (receiver.isEmpty())
        return receiver;
    NSMutableString copy(receiver);
    change(copy);
    return copy.characters() == receiver.characters() ? receiver : copy.takeString();
}

/// Each unit replaced by what `map` gives for it; the receiver itself when that changes nothing.
template <class Map>
NSString copyMappedBy(const NSString& receiver, Map map) {
    const std::u16string_view text = receiver;
    const auto first =
        std::find_if(text.begin(), text.end(), [&](char16_t unit) { return map(unit) != unit; });
    if (first == text.end())
        return receiver;
    NSMutableString copy(receiver);
    char16_t* units = copy.mutableCharacters();
    std::transform(units + (first - text.begin()), units + copy.length(), units + (first - text.begin()),
                   [&](char16_t unit) { return static_cast<char16_t>(map(unit)); });
    return copy.takeString();
}

/// For changes that the platform's strings refuse with an exception, and then leave undone: those that would
/// make them too long, and those at a place that they do not have.
template <class Change>
void unlessRefused(Change change) {
    try {
        change();
    } catch (const NSException&) {
        // Nothing has changed, and that is how a member reports it.
        return;
    }
}

/// The most units in one string.
inline constexpr std::size_t mostUnits = maximumSizeInBytes / sizeof(char16_t);

/// The length after `count` parts of `oldLength` units each have been replaced by `newLength` units, or
/// NSNotFound when no string can be that long. The parts lie inside `length`.
constexpr std::size_t lengthAfterReplacing(std::size_t length, std::size_t count, std::size_t oldLength,
                                           std::size_t newLength) {
    const std::size_t kept = length - count * oldLength;
    if (kept > mostUnits || (count != 0 && newLength > (mostUnits - kept) / count))
        return NSNotFound;
    return kept + count * newLength;
}

} // namespace kelvo
