#include "mdimport/MetaDataImporter.h"

#include <gtest/gtest.h>

namespace kelvo {
namespace {

TEST(MetaDataImporterTest, TheSharedOneIsKeptUntilItIsReleased) {
    std::weak_ptr<MetaDataImporter> seen = MetaDataImporter::sharedImporter();
    EXPECT_TRUE(seen.lock()->MDImporterArray.isNil() && seen.lock()->contentTypesForMDImporter.isNil());
    seen.lock()->contentTypesForMDImporter = NSMutableDictionary::dictionary();
    std::make_shared<MetaDataImporter>().reset();
    EXPECT_EQ(MetaDataImporter::sharedImporter(), seen.lock());
    EXPECT_FALSE(MetaDataImporter::sharedImporter()->contentTypesForMDImporter.isNil());

    const auto held = MetaDataImporter::sharedImporter();
    MetaDataImporter::releaseSharedImporter();
    EXPECT_NE(MetaDataImporter::sharedImporter(), held);
    EXPECT_TRUE(MetaDataImporter::sharedImporter()->contentTypesForMDImporter.isNil());
    seen = MetaDataImporter::sharedImporter();
    MetaDataImporter::releaseSharedImporter();
    EXPECT_TRUE(seen.expired());
    EXPECT_EQ(MetaDataImporter().className(), u"MetaDataImporter");
}

} // namespace
} // namespace kelvo
