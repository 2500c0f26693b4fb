#include "platform/appkit/rtfreader/RTFWords.h"

namespace kelvo {

std::size_t RTFWordIndex::slotOf(std::string_view name) {
    std::uint32_t hash = 2166136261u;
    for (const char unit : name)
        hash = (hash ^ static_cast<unsigned char>(unit)) * 16777619u;
    return (hash ^ (hash >> 15)) & (slotCount - 1);
}

void RTFWordIndex::add(std::string_view name, Entry entry) {
    std::size_t slot = slotOf(name);
    while (!slots_[slot].name.empty())
        slot = (slot + 1) & (slotCount - 1);
    slots_[slot] = {name, entry};
}

const RTFWordIndex::Entry* RTFWordIndex::find(std::string_view name) const {
    std::size_t slot = slotOf(name);
    while (!slots_[slot].name.empty()) {
        if (slots_[slot].name == name)
            return &slots_[slot].entry;
        slot = (slot + 1) & (slotCount - 1);
    }
    return nullptr;
}

} // namespace kelvo
