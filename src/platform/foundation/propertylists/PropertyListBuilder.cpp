#include "platform/foundation/propertylists/PropertyListBuilder.h"

#include "platform/foundation/NSException.h"

#include <utility>

namespace kelvo {

void PropertyListBuilder::countValue() {
    if (++valueCount_ > maximumPropertyListValueCount)
        throwPropertyListError(u"The property list has more than 4194304 values.");
}

void PropertyListBuilder::requireRoom() const {
    if (!root_.isNil())
        throwPropertyListError(u"There is more than one value.");
    if (isInsideDictionary() && containers_.back().key.isNil())
        throwPropertyListError(u"A value of a dictionary has no key.");
}

void PropertyListBuilder::beginContainer(bool isDictionary) {
    requireRoom();
    countValue();
    if (containers_.size() == Value::maximumDepth)
        throwPropertyListError(u"The property list is more than 512 levels deep.");
    containers_.push_back({isDictionary,
                           {},
                           isDictionary ? NSMutableDictionary::dictionary() : NSMutableDictionary(),
                           nullptr});
}

PropertyListBuilder::Container PropertyListBuilder::takeContainer(bool isDictionary) {
    if (!isInsideContainer() || isInsideDictionary() != isDictionary)
        throwPropertyListError(u"The end of a container does not match its beginning.");
    Container container = std::move(containers_.back());
    containers_.pop_back();
    return container;
}

void PropertyListBuilder::endArray() {
    place(NSArray::arrayWithValues(takeContainer(false).elements));
}

void PropertyListBuilder::endDictionary() {
    Container container = takeContainer(true);
    if (!container.key.isNil())
        throwPropertyListError(u"A key of a dictionary has no value.");
    place(container.entries.copy());
}

void PropertyListBuilder::setKey(NSString key) {
    if (!isInsideDictionary())
        throwPropertyListError(u"There is a key outside of a dictionary.");
    if (!containers_.back().key.isNil())
        throwPropertyListError(u"A key of a dictionary has no value.");
    countValue();
    containers_.back().key = std::move(key);
}

void PropertyListBuilder::addValue(Value value) {
    requireRoom();
    countValue();
    place(std::move(value));
}

void PropertyListBuilder::place(Value value) {
    if (!isInsideContainer())
        root_ = std::move(value);
    else if (isInsideDictionary())
        containers_.back().entries.setObject_forKey(std::move(value),
                                                    std::exchange(containers_.back().key, nullptr));
    else
        containers_.back().elements.push_back(std::move(value));
}

Value PropertyListBuilder::takeRoot() {
    if (isInsideContainer())
        throwPropertyListError(u"The property list ends inside a container.");
    if (root_.isNil())
        throwPropertyListError(u"There is no value.");
    return std::move(root_);
}

} // namespace kelvo
