#include "mdimport/MetaDataImporter.h"

namespace kelvo {

std::shared_ptr<MetaDataImporter> MetaDataImporter::sharedImporter() {
    static std::weak_ptr<MetaDataImporter> shared;
    std::shared_ptr<MetaDataImporter> importer = shared.lock();
    if (!importer) {
        importer = std::make_shared<MetaDataImporter>();
        shared = importer;
    }
    return importer;
}

NSString MetaDataImporter::className() const {
    return u"MetaDataImporter";
}

} // namespace kelvo
