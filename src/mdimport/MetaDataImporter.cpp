#include "mdimport/MetaDataImporter.h"

#include "mdimport/ImporterBundles.h"
#include "mdimport/ImporterTool.h"
#include "platform/foundation/NSMutableString.h"
#include "platform/foundation/Value.h"
#include "platform/foundation/encodings/CFString.h"
#include "platform/foundation/encodings/NSStringEncoding.h"
#include "platform/launchservices/LaunchServices.h"

namespace kelvo {

namespace {

std::shared_ptr<MetaDataImporter>& shared() {
    static std::shared_ptr<MetaDataImporter> importer;
    return importer;
}

} // namespace

std::shared_ptr<MetaDataImporter> MetaDataImporter::sharedImporter() {
    if (!shared())
        shared() = std::make_shared<MetaDataImporter>();
    return shared();
}

void MetaDataImporter::releaseSharedImporter() {
    shared() = nullptr;
}

NSString MetaDataImporter::className() const {
    return u"MetaDataImporter";
}

NSString MetaDataImporter::importerForFileAtPath_contentType(const NSString& path, NSString* contentType) {
    if (contentTypesForMDImporter.isNil()) {
        contentTypesForMDImporter = NSMutableDictionary::dictionary();
        MDImporterArray = NSMutableArray::array();
        loadMDImporters();
    }
    NSMutableString lowercase(LSCopyItemAttribute(path, kLSItemContentType));
    CFStringLowercase(lowercase);
    const NSString type = lowercase.takeString();
    if (contentType)
        *contentType = type;
    if (type.isNil())
        return nullptr;
    for (const Value& importer : MDImporterArray) {
        if (contentTypesForMDImporter.objectForKey(importer).array().containsObject(type))
            return importer.string();
    }
    return nullptr;
}

void MetaDataImporter::loadMDImporters() {
    const NSData listing = listingOfImporterTool();
    if (!listing.isNil()) {
        const NSString text = stringWithData_encoding(listing, NSUTF8StringEncoding);
        // A tool that cannot be understood is not worked around: there are no importers then.
        if (text.isNil())
            return;
        MDImporterArray = importersInListing(text);
    }
    if (listing.isNil() || MDImporterArray.isNil())
        MDImporterArray = importersInFolders();

    for (const Value& importer : MDImporterArray) {
        // A bundle that is there twice has its types twice.
        NSMutableArray types(contentTypesForMDImporter.objectForKey(importer).array());
        if (types.isNil())
            types = NSMutableArray::array();
        if (appendContentTypesOfImporter(types, importer.string()))
            contentTypesForMDImporter.setObject_forKey(types, importer);
    }
}

} // namespace kelvo
