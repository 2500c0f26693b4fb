#include "platform/appkit/rtfreader/RTFWords.h"

#include <array>
#include <cstddef>

namespace kelvo {
namespace {

/// Open addressing over four times as many slots as there are words: nearly every look-up ends at the first.
struct WordTable {
    struct Slot {
        std::string_view name;
        RTFWordEntry entry;
    };

    WordTable() {
#define KELVO_RTF_SLOT(kind, name) add(#name, {RTFWord::name, RTFWordKind::kind});
        KELVO_RTF_WORDS(KELVO_RTF_SLOT)
#undef KELVO_RTF_SLOT
    }

    static std::size_t slotOf(std::string_view name) {
        std::uint32_t hash = 2166136261u;
        for (const char unit : name)
            hash = (hash ^ static_cast<unsigned char>(unit)) * 16777619u;
        return (hash ^ (hash >> 15)) & (slotCount - 1);
    }

    void add(std::string_view name, RTFWordEntry entry) {
        if (name.ends_with('_'))
            name.remove_suffix(1);
        std::size_t slot = slotOf(name);
        while (!slots[slot].name.empty())
            slot = (slot + 1) & (slotCount - 1);
        slots[slot] = {name, entry};
    }

    static constexpr std::size_t slotCount = 2048;
    std::array<Slot, slotCount> slots;
};

} // namespace

RTFWordEntry rtfWordNamed(std::string_view name) {
    static const WordTable table;
    std::size_t slot = WordTable::slotOf(name);
    while (!table.slots[slot].name.empty()) {
        if (table.slots[slot].name == name)
            return table.slots[slot].entry;
        slot = (slot + 1) & (WordTable::slotCount - 1);
    }
    return {};
}

} // namespace kelvo
