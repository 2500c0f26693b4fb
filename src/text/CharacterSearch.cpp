#include "text/CharacterSearch.h"

#include "platform/foundation/NSMutableString.h"
#include "text/FoldingTables.h"
#include "text/UnitSet.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace kelvo {

namespace {

using UnitPair = std::pair<char16_t, char16_t>;

/// Pairs of an upper-case form and a unit that has it without being its lower-case form: U+017F beside "s"
/// for "S". There are about twenty, in order.
const std::vector<UnitPair>& irregularUppercasePairs() {
    static const std::vector<UnitPair> pairs = [] {
        const char16_t *upper = initUpperCharsTable(), *lower = initLowerCharsTable();
        std::vector<UnitPair> found;
        for (std::size_t index = 0; index < foldingTableCount; ++index) {
            const auto unit = static_cast<char16_t>(index);
            if (upper[unit] != unit && lower[upper[unit]] != unit)
                found.emplace_back(upper[unit], unit);
        }
        std::sort(found.begin(), found.end());
        return found;
    }();
    return pairs;
}

UnitsToFind onlyUnit(char16_t unit) {
    return {{unit, unit, unit, unit}, 1};
}

std::size_t locationOrNotFound(std::size_t index, std::u16string_view string) {
    return index < string.size() ? index : NSNotFound;
}

} // namespace

UnitsToFind unitsOfSameUppercase(char16_t unit) {
    const char16_t *upper = initUpperCharsTable(), *lower = initLowerCharsTable();
    const char16_t common = upper[unit];
    UnitsToFind wanted = onlyUnit(unit);
    const auto add = [&](char16_t other) {
        // No code unit shares its upper case with more than three others.
        if (upper[other] == common && !wanted.contains(other) && wanted.count < std::size(wanted.units))
            wanted.units[wanted.count++] = other;
    };
    add(common);
    add(lower[common]);
    const auto& irregular = irregularUppercasePairs();
    for (auto pair = std::lower_bound(irregular.begin(), irregular.end(), UnitPair(common, 0));
         pair != irregular.end() && pair->first == common; ++pair)
        add(pair->second);
    return wanted;
}

UnitsToFind unitsMatchingCharacter(char16_t unit, bool caseInsensitive) {
    const char16_t *upper = initUpperCharsTable(), *lower = initLowerCharsTable();
    if (upper[unit] == lower[unit])
        return onlyUnit(unit);
    return caseInsensitive ? unitsOfSameUppercase(unit) : onlyUnit(upper[unit]);
}

UnitsToFind unitsReplacedWithCharacter(char16_t unit, bool caseInsensitive) {
    const bool hasCase = initUpperCharsTable()[unit] != initLowerCharsTable()[unit];
    return caseInsensitive && !hasCase ? unitsOfSameUppercase(unit) : onlyUnit(unit);
}

std::size_t findCharacter(std::u16string_view string, char16_t unit, std::size_t startAt,
                          bool caseInsensitive) {
    if (startAt >= string.size())
        return NSNotFound;
    const UnitsToFind wanted = unitsMatchingCharacter(unit, caseInsensitive);
    return locationOrNotFound(
        startAt + firstUnitEqualTo(string.data() + startAt, string.size() - startAt, wanted), string);
}

std::size_t countCharacter(std::u16string_view string, char16_t unit, std::size_t startAt,
                           bool caseInsensitive) {
    if (startAt >= string.size())
        return 0;
    const UnitsToFind wanted = unitsMatchingCharacter(unit, caseInsensitive);
    return countUnitsEqualTo(string.data() + startAt, string.size() - startAt, wanted);
}

std::size_t findOneOf(std::u16string_view string, std::u16string_view candidates, std::size_t startAt,
                      bool caseInsensitive) {
    if (candidates.empty() || startAt >= string.size())
        return NSNotFound;
    const char16_t* units = string.data() + startAt;
    const std::size_t count = string.size() - startAt;
    UnitSet wanted(count);
    for (const char16_t candidate : candidates) {
        const UnitsToFind matches = caseInsensitive ? unitsOfSameUppercase(candidate) : onlyUnit(candidate);
        for (unsigned k = 0; k < matches.count; ++k)
            wanted.add(matches.units[k]);
    }
    return locationOrNotFound(startAt + wanted.firstIn(units, count), string);
}

NSString stringByReplacingCharacter(const NSString& string, char16_t oldUnit, char16_t newUnit,
                                    bool caseInsensitive) {
    if (string.isEmpty() || oldUnit == newUnit)
        return string;
    const UnitsToFind wanted = unitsReplacedWithCharacter(oldUnit, caseInsensitive);
    const std::u16string_view text = string;
    const std::size_t first = firstUnitEqualTo(text.data(), text.size(), wanted);
    if (first == text.size())
        return string;
    NSMutableString result(string);
    char16_t* units = result.mutableCharacters();
    std::replace_if(
        units + first, units + result.length(), [&](char16_t unit) { return wanted.contains(unit); },
        newUnit);
    return result.takeString();
}

} // namespace kelvo
