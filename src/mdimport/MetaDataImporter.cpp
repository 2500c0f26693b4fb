#include "mdimport/MetaDataImporter.h"

#include "mdimport/ImporterBundles.h"
#include "mdimport/ImporterTool.h"
#include "platform/foundation/NSException.h"
#include "platform/foundation/NSMutableString.h"
#include "platform/foundation/NSStringFormat.h"
#include "platform/foundation/NSURL.h"
#include "platform/foundation/Value.h"
#include "platform/foundation/encodings/CFString.h"
#include "platform/foundation/encodings/NSStringEncoding.h"
#include "platform/launchservices/LaunchServices.h"
#include "platform/ledger/RequestNotes.h"
#include "platform/plugins/CFPlugInInstance.h"

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

NSMutableDictionary MetaDataImporter::metaDataOfFileAtPath(const NSString& path) {
    NSString contentType;
    const NSString importer = importerForFileAtPath_contentType(path, &contentType);
    if (importer.isNil()) {
        if (!contentType.isNil())
            noteOutcome(Outcome::unsupported,
                        stringWithFormat(u"no importer is for files of its type (%@)", contentType));
        return nullptr;
    }
    const CFPlugIn plugIn = CFPlugInCreate(NSURL::fileURLWithPath(importer));
    if (plugIn.isNil())
        return nullptr;
    const auto factories = CFPlugInFindFactoriesForPlugInTypeInPlugIn(importerTypeIdentifier, plugIn);
    if (!factories)
        return nullptr;
    for (const CFUUID& factory : *factories) {
        const auto instance = CFPlugInInstanceCreate(factory, importerTypeIdentifier, plugIn);
        if (!instance)
            continue;
        const auto interface = instance->QueryInterface(importerInterfaceIdentifier);
        instance->Release();
        if (!interface)
            continue;
        NSMutableDictionary attributes = NSMutableDictionary::dictionary();
        try {
            interface->ImporterImportData(attributes, contentType, path);
        } catch (const NSException& exception) {
            // Whoever gets some attributes is told why there are no more.
            noteOutcome(Outcome::answered, sentenceOfReason(exception.reason()));
        }
        return attributes;
    }
    return nullptr;
}

NSString MetaDataImporter::textContentOfFileAtPath(const NSString& path) {
    return metaDataOfFileAtPath(path).objectForKey(kMDItemTextContent).string();
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
