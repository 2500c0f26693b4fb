#pragma once

#include "platform/appkit/NSTextList.h"

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

namespace kelvo {

struct RTFToken;

/// The lists that a document defines, and the numbers under which its paragraphs mention them.
class RTFListTable {
public:
    using List = std::shared_ptr<const NSTextList>;
    static constexpr int levelCount = 9;

    /// Words of both tables, the one of lists and the one of overrides.
    void apply(const RTFToken& token);
    /// A list's definition begins.
    void beginList();
    void setMarker(std::u16string_view marker);
    void setText(std::u16string_view text);

    /// The lists from the outermost to the one of the level (0 to 8); empty when the number means nothing.
    /// Equal arguments give the same objects.
    std::vector<List> listsOf(std::int32_t number, int level);

private:
    struct Level {
        std::int32_t kind = 0;
        std::optional<std::int32_t> startingNumber;
        std::u16string marker;
        std::u16string text;
        bool isFormatStated = false;
    };
    struct Definition {
        /// The identifier of the list itself, or of the list that an override changes.
        std::int32_t identifier = 0;
        std::vector<Level> levels;
        int currentLevel = -1;
    };

    void beginOverride();
    void addLevel();
    Level* currentLevel();
    Definition& current();
    static std::u16string enclosingNumbers(std::u16string_view before);
    static NSTextList makeList(const Level& level, int index);

    bool isInOverrides_ = false;
    std::vector<Definition> lists_;
    std::vector<Definition> overrides_;
    std::unordered_map<std::int32_t, std::size_t> listOfIdentifier_;
    std::unordered_map<std::int32_t, std::size_t> overrideOfNumber_;
    std::unordered_map<std::int32_t, std::vector<List>> made_;
};

/// A list of the old kind: each paragraph describes its own.
class RTFOldList {
public:
    void apply(const RTFToken& token);
    void setTextBefore(std::u16string_view text) { before_ = text; }
    void setTextAfter(std::u16string_view text) { after_ = text; }
    /// Absent when the paragraph is in no list.
    std::optional<NSTextList> list() const;

private:
    enum class Kind : std::uint8_t {
        none,
        bullet,
        decimal,
        lowerLetters,
        upperLetters,
        lowerRoman,
        upperRoman
    };
    template <Kind kind>
    static void setKind(RTFOldList& list, const RTFToken& token);

    Kind kind_ = Kind::none;
    std::int32_t startingNumber_ = 1;
    std::u16string before_;
    std::u16string after_;
};

/// The format of a list whose items are marked by this text: a kind of marker where there is one for it.
NSString markerFormatOfBullet(std::u16string_view bullet);

} // namespace kelvo
