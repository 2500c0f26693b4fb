#include "collections/MSMutableArrayKelvoExtensions.h"
#include "collections/NSArrayKelvoExtensions.h"
#include "collections/Sorting.h"

#include "platform/foundation/NSException.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <random>
#include <vector>

namespace kelvo {
namespace {

/// One string for each letter, the same object wherever it stands; a capital letter is an equal twin of it.
class Words {
public:
    Value operator[](char letter) {
        const auto unit = static_cast<char16_t>(letter | 0x20);
        return words_.try_emplace(letter, NSString(std::u16string_view(&unit, 1))).first->second;
    }
    NSArray array(const std::string& letters) {
        NSMutableArray array = NSMutableArray::array();
        for (const char letter : letters)
            array.addObject((*this)[letter]);
        return array;
    }
    std::string shown(const NSArray& array) const {
        std::string result;
        for (const Value& value : array)
            for (const auto& [letter, own] : words_)
                result.append(value.isIdenticalTo(own), letter);
        return result;
    }

private:
    std::map<char, Value> words_;
};

template <void (*operation)(NSMutableArray&, std::initializer_list<Value>)>
void ofList(NSMutableArray& array, const NSArray& objects) {
    const Value* const first = objects.begin();
    operation(array, {first[0], first[1], first[2], nullptr, u"x"});
}

void addObjectsOfArray(NSMutableArray& array, const NSArray& objects) {
    addObjects(array, nullptr);
    std::vector<Value> list(objects.begin(), objects.end());
    list.emplace_back();
    addObjects(array, list.data());
}

void insertObjects(NSMutableArray& array, const NSArray& objects) {
    insertObjectsFromArray_atIndex(array, objects, 0);
}

TEST(ArrayExtensionsTest, SetsByEqualityAndByIdentity) {
    const struct {
        const char* name;
        void (*operation)(NSMutableArray&, const NSArray&);
        std::string array, other, result;
    } rows[] = {
        {"union", unionWithObjectsFromArray, "aBa", "bcCd", "aBacd"},
        {"union of identical", unionWithIdenticalObjectsFromArray, "aBa", "bcCcd", "aBabcCd"},
        {"union of list", ofList<unionWithObjects>, "a", "Abb", "ab"},
        {"union of identical list, first equal", ofList<unionWithIdenticalObjects>, "ab", "ABa", "abB"},
        {"union of identical list, first new", ofList<unionWithIdenticalObjects>, "b", "AaB", "bAaB"},
        {"join", joinWithObjectsFromArray, "abcab", "BA", "abab"},
        {"join with nil", joinWithObjectsFromArray, "ab", "", ""},
        {"join of identical", joinWithIdenticalObjectsFromArray, "abcaB", "BA", "B"},
        {"remove", removeObjectsFromArray, "abcab", "BA", "c"},
        {"remove nothing", removeObjectsFromArray, "aba", "", "aba"},
        {"remove identical", removeIdenticalObjectsFromArray, "abcaB", "Ba", "bc"},
        {"insert", insertObjects, "ab", "Aa", "abAa"},
        {"append", ofList<appendObjects>, "ab", "bbA", "abbbA"},
        {"add", addObjectsOfArray, "ab", "bb", "abbb"},
    };
    for (const auto& [name, operation, array, other, result] : rows) {
        Words words;
        NSMutableArray changed(words.array(array));
        operation(changed, other.empty() ? NSArray() : words.array(other));
        EXPECT_EQ(words.shown(changed), result) << name;
        NSMutableArray nil;
        operation(nil, words.array("abcd"));
        EXPECT_TRUE(nil.isNil()) << name;
    }
    // An array and itself.
    Words words;
    NSMutableArray twice(words.array("aAb"));
    insertObjectsFromArray_atIndex(twice, twice, 1);
    EXPECT_EQ(words.shown(twice), "aAbaAb");
    removeIdenticalObjectsFromArray(twice, twice);
    EXPECT_EQ(twice.count(), 0U);
}

TEST(ArrayExtensionsTest, MovesAndCuts) {
    const struct {
        std::size_t from, to;
        bool succeeds;
        std::string result;
    } moves[] = {
        {0, 2, true, "bacd"}, {3, 1, true, "adbc"},  {0, 1, true, "abcd"},  {2, 0, true, "cabd"},
        {1, 1, true, "abcd"}, {0, 4, false, "abcd"}, {4, 0, false, "abcd"}, {9, 9, true, "abcd"},
    };
    Words words;
    for (const auto& [from, to, succeeds, result] : moves) {
        NSMutableArray array(words.array("abcd"));
        EXPECT_EQ(moveObjectAtIndex_toIndex(array, from, to), succeeds) << from << " to " << to;
        EXPECT_EQ(words.shown(array), result) << from << " to " << to;
    }
    NSMutableArray array(words.array("abcd")), nil;
    EXPECT_EQ(setCount(array, 5), 4U);
    EXPECT_EQ(setCount(array, 3), 3U);
    EXPECT_EQ(words.shown(array), "abc");
    EXPECT_TRUE(setCount(nil, 3) == 0 && !moveObjectAtIndex_toIndex(nil, 1, 1));
    EXPECT_TRUE(firstObject(NSArray::array()).isNil() && firstObject(nil).isNil());
    EXPECT_TRUE(firstObject(words.array("ba")).isIdenticalTo(words['b']));
    EXPECT_FALSE(containsObjectIdenticalTo(words.array("ba"), words['A']));
}

TEST(ArrayExtensionsTest, AppliesFunctionsToWhatThereIs) {
    Words words;
    const NSArray array = words.array("abcd");
    const std::tuple<NSRange, std::string> rows[] = {{{0, 4}, "abcd"},      {{1, 2}, "bc"}, {{3, 9}, "d"},
                                                     {{2, SIZE_MAX}, "cd"}, {{4, 1}, ""},   {{1, 0}, ""}};
    const CFArrayApplierFunction append = [](const Value& value, void* context) {
        *static_cast<std::string*>(context) += value.string().UTF8String();
    };
    for (const auto& [range, letters] : rows) {
        std::string seen;
        applyFunction_context_range(array, append, &seen, range);
        applyFunction_context_range(array, nullptr, &seen, range);
        EXPECT_EQ(seen, letters);
    }
    NSMutableArray growing(array);
    const CFArrayApplierFunction grow = [](const Value& value, void* context) {
        static_cast<NSMutableArray*>(context)->addObject(value);
    };
    applyFunction_context(growing, grow, &growing);
    EXPECT_EQ(words.shown(growing), "abcdabcd");
}

std::vector<int> integersOf(const NSArray& array) {
    std::vector<int> result;
    for (const Value& value : array)
        result.push_back(value.numberIfAny()->intValue());
    return result;
}

TEST(ArrayExtensionsTest, SortsAndFinds) {
    const CFComparatorFunction byTens = [](const Value& left, const Value& right, void* context) {
        ++*static_cast<int*>(context);
        return left.numberIfAny()->intValue() / 10 - right.numberIfAny()->intValue() / 10;
    };
    const auto isBefore = [](int left, int right) { return left / 10 < right / 10; };
    const auto find = indexOfObject_inRange_usingBinarySearch_context;
    std::minstd_rand random(1);
    int calls = 0;
    for (std::size_t size = 0; size < 70; ++size) {
        std::vector<int> numbers(size);
        NSMutableArray array = NSMutableArray::array();
        for (int& each : numbers)
            array.addObject(NSNumber::numberWithInt(each = static_cast<int>(random() % 100)));
        const std::size_t start = size / 4, length = size / 2;
        const auto first = numbers.begin() + static_cast<int>(start);
        std::stable_sort(first, first + static_cast<int>(length), isBefore);
        quickSortUsingFunction_range_context(array, byTens, {start, length}, &calls);
        EXPECT_EQ(integersOf(array), numbers);
        for (const int sought : {-1, 0, 35, 50, 99, 100}) {
            std::size_t found = start;
            while (found < start + length && numbers[found] / 10 < sought / 10)
                ++found;
            const NSNumber number = NSNumber::numberWithInt(sought);
            EXPECT_EQ(find(array, number, {start, length}, byTens, &calls), found);
        }
        quickSortUsingFunction_range_context(array, byTens, {size, 0}, &calls);
        quickSortUsingFunction_range_context(array, byTens, {0, size + 1}, &calls);
        quickSortUsingFunction_context(array, nullptr, &calls);
        EXPECT_EQ(integersOf(array), numbers);
        quickSortUsingFunction_context(array, byTens, &calls);
        std::stable_sort(numbers.begin(), numbers.end(), isBefore);
        EXPECT_EQ(integersOf(array), numbers);
    }
    EXPECT_GT(calls, 0);
    Words words;
    NSMutableArray array(words.array("dbca"));
    const CFComparatorFunction descending = comparingStrings<sortDescending>;
    const CFComparatorFunction failing = [](const Value&, const Value&, void*) -> int { throw 1; };
    EXPECT_THROW(quickSortUsingFunction(array, failing), int);
    EXPECT_EQ(words.shown(array), "dbca");
    quickSortUsingFunction(array, descending);
    EXPECT_EQ(words.shown(array), "dcba");
    EXPECT_EQ(indexOfObject_usingBinarySearch_context(array, words['b'], descending, nullptr), 2U);
    EXPECT_THROW(find(array, words['b'], {3, 2}, descending, nullptr), NSException);
}

} // namespace
} // namespace kelvo
