#include "mdimport/MetaDataImporter.h"

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

} // namespace kelvo
