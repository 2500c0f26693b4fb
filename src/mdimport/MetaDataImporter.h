#pragma once

#include "platform/foundation/NSArray.h"
#include "platform/foundation/NSDictionary.h"
#include "platform/foundation/NSObject.h"

namespace kelvo {

/// What the service knows of the installed metadata importers. Used on one thread.
class MetaDataImporter : public NSObject {
public:
    /// Both tables are nil: nothing has been loaded.
    MetaDataImporter() = default;

    /// The process-wide instance, made at the first call and kept with its tables, whoever else holds it.
    static std::shared_ptr<MetaDataImporter> sharedImporter();
    /// Lets go of it: it is destroyed with its last holder, and the next sharedImporter makes another.
    static void releaseSharedImporter();

    NSString className() const override;

    /// Full paths of the importer bundles, in order of priority: the first that claims a content type wins.
    NSMutableArray MDImporterArray;
    /// From the path of a bundle to an array of the content types it declares, in lower case. Nil as long as
    /// nothing has been loaded; made once, before MDImporterArray, and kept even when loading found nothing.
    NSMutableDictionary contentTypesForMDImporter;
};

} // namespace kelvo
