#pragma once

#include "platform/foundation/NSArray.h"
#include "platform/foundation/NSDictionary.h"
#include "platform/foundation/NSObject.h"

namespace kelvo {

/// The attribute that is the text of the whole file.
inline constexpr const char16_t* kMDItemTextContent = u"kMDItemTextContent";

/// What the service knows of the installed metadata importers. Used on one thread. What is installed while the process
/// runs is not seen.
class MetaDataImporter : public NSObject {
public:
    /// Both tables are nil: nothing has been loaded.
    MetaDataImporter() = default;

    /// The process-wide instance, made at the first call and kept with its tables, whoever else holds it.
    static std::shared_ptr<MetaDataImporter> sharedImporter();
    /// Lets go of it: it is destroyed with its last holder, and the next sharedImporter makes another.
    static void releaseSharedImporter();

    NSString className() const override;

    /// What the first importer that declares the file's content type finds in it, by names of attributes ("kMDItem…");
    /// empty when it finds nothing. When it raises, or its process ends or takes too long, what it had found until then.
    /// Nil without a file, a type for it or an importer for that, and when the importer cannot be loaded. What became of
    /// the importer is noted with the current request.
    ///
    /// Throws what importerForFileAtPath_contentType throws, and std::runtime_error when the importer throws what is no
    /// NSException.
    NSMutableDictionary metaDataOfFileAtPath(const NSString& path);
    /// The text of the file among that; nil when there is none, or it is no string.
    NSString textContentOfFileAtPath(const NSString& path);

    /// The bundle that is to import the file: the first that declares the file's content type, which is given in lower
    /// case (`contentType` may be null). Nil without a file, when the system has no type for it, and when no bundle
    /// declares that.
    ///
    /// The first call, whatever its path, finds the importers, which may take as long as the system's tool for that (10
    /// seconds). What that throws passes out of it, and later calls find what has been recorded until then.
    NSString importerForFileAtPath_contentType(const NSString& path, NSString* contentType);

    /// Full paths of the importer bundles, in order of priority: the first that claims a content type wins.
    NSMutableArray MDImporterArray;
    /// From the path of a bundle to an array of the content types it declares, in lower case. Nil as long as
    /// nothing has been loaded; made once, before MDImporterArray, and kept even when loading found nothing.
    NSMutableDictionary contentTypesForMDImporter;

private:
    void loadMDImporters();
};

} // namespace kelvo
