#include "platform/foundation/NSData.h"

#include "platform/foundation/NSException.h"

#include <algorithm>
#include <utility>

namespace kelvo {

NSData NSData::dataWithBytesNoCopy(std::span<const std::uint8_t> bytes, std::shared_ptr<const void> owner) {
    checkedSizeInBytes(bytes.size(), 1);
    NSData result;
    result.rep_ = std::make_shared<const Rep>(Rep{bytes, std::move(owner)});
    return result;
}

NSData NSData::data() {
    static const NSData empty = dataWithBytesNoCopy({}, nullptr);
    return empty;
}

NSData NSData::dataWithBytes(const void* bytes, std::size_t lengthInBytes) {
    checkedSizeInBytes(lengthInBytes, 1);
    const auto* first = static_cast<const std::uint8_t*>(bytes);
    return dataWithBytesNoCopy(std::vector<std::uint8_t>(first, first + lengthInBytes));
}

NSData NSData::dataWithBytesNoCopy(std::vector<std::uint8_t> bytes) {
    auto owner = std::make_shared<const std::vector<std::uint8_t>>(std::move(bytes));
    const std::span<const std::uint8_t> view(*owner);
    return dataWithBytesNoCopy(view, std::move(owner));
}

NSData NSData::dataWithBytesNoCopy(std::string bytes) {
    auto owner = std::make_shared<const std::string>(std::move(bytes));
    const std::span<const std::uint8_t> view(reinterpret_cast<const std::uint8_t*>(owner->data()),
                                             owner->size());
    return dataWithBytesNoCopy(view, std::move(owner));
}

std::string_view NSData::characters() const noexcept {
    return {reinterpret_cast<const char*>(bytes().data()), length()};
}

NSData NSData::subdataWithRange(NSRange range) const {
    if (!rangeFits(range, length()))
        throw NSException(NSRangeException, u"The range passes the end of the data.");
    return isNil() ? NSData()
                   : dataWithBytesNoCopy(rep_->bytes.subspan(range.location, range.length), rep_->owner);
}

bool operator==(const NSData& left, const NSData& right) noexcept {
    return left.rep_ == right.rep_ ||
           (left.rep_ && right.rep_ && std::ranges::equal(left.rep_->bytes, right.rep_->bytes));
}

} // namespace kelvo
