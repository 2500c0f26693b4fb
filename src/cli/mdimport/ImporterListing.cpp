#include "cli/mdimport/ImporterListing.h"

#include "platform/foundation/OldStylePropertyListWriter.h"

namespace kelvo::cli {

std::string listingOfImporters(const NSArray& importers, uid_t user) {
    NSMutableArray paths = NSMutableArray::array();
    for (std::size_t index = importers.count(); index-- > 0;)
        paths.addObject(importers.objectAtIndex(index));
    return "Paths: id(" + std::to_string(user) + ") " + oldStylePropertyListFromValue(paths).UTF8String() +
           "\n";
}

} // namespace kelvo::cli
