#pragma once

#include "platform/foundation/PropertyListLimits.h"
#include "platform/foundation/Value.h"

#include <string_view>
#include <vector>

namespace kelvo {

/// Puts together a tree from the events of a reader, without recursion, and refuses (by
/// throwPropertyListError) a tree that is too deep, too large, or not well formed.
class PropertyListBuilder {
public:
    void beginArray() { beginContainer(false); }
    void beginDictionary() { beginContainer(true); }
    void endArray();
    void endDictionary();
    /// For the next value; only inside a dictionary.
    void setKey(NSString key);
    void addValue(Value value);

    bool isInsideContainer() const { return !containers_.empty(); }
    bool isInsideDictionary() const { return isInsideContainer() && containers_.back().isDictionary; }
    /// The one value that was built.
    Value takeRoot();

private:
    struct Container {
        bool isDictionary;
        std::vector<Value> elements;
        NSMutableDictionary entries;
        NSString key;
    };

    void beginContainer(bool isDictionary);
    void countValue();
    void requireRoom() const;
    Container takeContainer(bool isDictionary);
    void place(Value value);

    std::vector<Container> containers_;
    Value root_;
    std::size_t valueCount_ = 0;
};

} // namespace kelvo
