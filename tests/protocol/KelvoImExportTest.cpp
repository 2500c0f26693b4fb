#include "platform/foundation/NSException.h"
#include "platform/foundation/Value.h"
#include "platform/foundation/connections/NSConnection.h"
#include "platform/foundation/processes/NSTask.h"
#include "protocol/KelvoImExportProxy.h"
#include "protocol/Operations.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <iterator>
#include <string>
#include <thread>

namespace kelvo {
namespace {

/// The proxy on this side and the adapter in another process, whose root object shows what it was given.
class KelvoImExportTest : public testing::Test {
protected:
    KelvoImExportTest() {
        setenv("XDG_RUNTIME_DIR", folder_.path().c_str(), 1);
        const auto programs = std::filesystem::read_symlink("/proc/self/exe").parent_path();
        service_.setLaunchPath(NSString::stringWithUTF8String((programs / "RehearsalService").string()));
        service_.launch();
        for (int turn = 0; turn < 2000 && !connection_; ++turn) {
            connection_ = NSConnection::connectionWithRegisteredName(KelvoImExport::registeredName);
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
        proxy_ = connection_ ? rootProxyForConnection(*connection_) : nullptr;
    }
    ~KelvoImExportTest() override {
        service_.terminate();
        service_.waitUntilExit();
    }
    void SetUp() override { ASSERT_TRUE(proxy_); }

    KelvoImExport& proxy() { return *proxy_; }
    NSConnection& connection() { return *connection_; }

private:
    tests::TemporaryFolder folder_;
    NSTask service_;
    std::unique_ptr<NSConnection> connection_;
    std::unique_ptr<KelvoImExport> proxy_;
};

TEST_F(KelvoImExportTest, EachOperationReachesItsOwnMethodWithItsArguments) {
    const auto html = [&](const NSData& data, const NSURL& base, bool allows) {
        return std::string(proxy().RTFDWithHTML_baseURL_allowRemoteRequest(data, base, allows).characters());
    };
    EXPECT_EQ(proxy().metaDataForFile(u"/a").objectForKey(u"file"), Value(u"/a"));
    EXPECT_EQ(html(nullptr, nullptr, false), "nil  no");
    EXPECT_EQ(html(NSData::data(), NSURL::URLWithString(u"http://h/%20?q"), true), "0 http://h/%20?q yes");
    EXPECT_TRUE(proxy().writeRTFDData_toFile(NSData::dataWithBytes("/b"), u"/b"));
    EXPECT_FALSE(proxy().writeRTFDData_toFile(NSData::dataWithBytes("/b"), u"/c"));
    EXPECT_FALSE(proxy().writeRTFDData_toFile(nullptr, u""));
    EXPECT_EQ(proxy().searchableTextOfWebArchive(u"/d").objectForKey(u"archive"), Value(u"/d"));
    EXPECT_EQ(proxy().attributedStringWithContentsOfFile(u"/e").objectForKey(u"document"), Value(u"/e"));
    EXPECT_EQ(proxy().posterImageForMovieWithFile(u"").objectForKey(u"movie"), Value(u""));
    for (const bool flag : {false, true}) {
        const NSDictionary pdf = proxy().attributed_stringWithPDF(flag, NSData::dataWithBytes("abc"));
        EXPECT_EQ(pdf.objectForKey(u"attributed"), Value(NSNumber::numberWithBool(flag)));
        EXPECT_EQ(pdf.objectForKey(u"length"), Value(NSNumber::numberWithInt(3)));
        const NSDictionary image =
            proxy().imageWithContentsOfFile_stringFromPDF_canUseSpotlight(u"/i", flag, !flag);
        EXPECT_EQ(image.objectForKey(u"file"), Value(u"/i"));
        EXPECT_EQ(image.objectForKey(u"text"), Value(NSNumber::numberWithBool(flag)));
        EXPECT_EQ(image.objectForKey(u"importers"), Value(NSNumber::numberWithBool(!flag)));
    }
    EXPECT_EQ(proxy().PDFImageRepOfFile(u"/70000000").length(), 70'000'000U);
}

TEST_F(KelvoImExportTest, NilIsNotEmptyInEitherDirection) {
    EXPECT_TRUE(proxy().metaDataForFile(nullptr).isNil());
    EXPECT_EQ(proxy().metaDataForFile(u"").objectForKey(u"file"), Value(u""));
    EXPECT_EQ(proxy().searchableTextOfWebArchive(nullptr), NSDictionary::dictionary());
    EXPECT_EQ(proxy().attributedStringWithContentsOfFile(nullptr), NSDictionary::dictionary());
    EXPECT_EQ(proxy().posterImageForMovieWithFile(nullptr), NSDictionary::dictionary());
    EXPECT_TRUE(proxy().PDFImageRepOfFile(nullptr).isNil());
    EXPECT_EQ(proxy().PDFImageRepOfFile(u"/0"), NSData::data());
    const auto length = [&](const NSData& pdf) {
        return proxy().attributed_stringWithPDF(false, pdf).objectForKey(u"length");
    };
    EXPECT_EQ(length(nullptr), Value(NSNumber::numberWithInt(-1)));
    EXPECT_EQ(length(NSData::data()), Value(NSNumber::numberWithInt(0)));
    EXPECT_TRUE(proxy()
                    .imageWithContentsOfFile_stringFromPDF_canUseSpotlight(nullptr, true, true)
                    .objectForKey(u"file")
                    .isNil());
}

TEST_F(KelvoImExportTest, WhatFailsIsCalledByItsOwnName) {
    connection().setReplyTimeout(0);
    const std::function<void()> operations[] = {
        [&] { proxy().metaDataForFile(u"/a"); },
        [&] { proxy().RTFDWithHTML_baseURL_allowRemoteRequest(nullptr, nullptr, false); },
        [&] { proxy().writeRTFDData_toFile(nullptr, u"/a"); },
        [&] { proxy().searchableTextOfWebArchive(u"/a"); },
        [&] { proxy().attributedStringWithContentsOfFile(u"/a"); },
        [&] { proxy().posterImageForMovieWithFile(u"/a"); },
        [&] { proxy().attributed_stringWithPDF(true, nullptr); },
        [&] { proxy().imageWithContentsOfFile_stringFromPDF_canUseSpotlight(u"/a", true, true); },
        [&] { proxy().PDFImageRepOfFile(u"/1"); },
    };
    static_assert(std::size(operations) == operationCount);
    for (std::size_t index = 0; index < operationCount; ++index) {
        const NSString name = selectorOfOperation(static_cast<Operation>(index));
        try {
            operations[index]();
            ADD_FAILURE() << name.UTF8String();
        } catch (const NSException& exception) {
            EXPECT_EQ(exception.name(), NSPortTimeoutException);
            EXPECT_EQ(exception.reason(), name.stringByAppendingString(u" was not answered in time."));
        }
    }
}

TEST(Operations, SelectorsStandInTheSchema) {
    EXPECT_EQ(selectorOfOperation(Operation::metaDataForFile), u"metaDataForFile:");
    EXPECT_EQ(selectorOfOperation(Operation::RTFDWithHTML), u"RTFDWithHTML:baseURL:allowRemoteRequest:");
    EXPECT_EQ(selectorOfOperation(Operation::PDFImageRepOfFile), u"PDFImageRepOfFile:");
}

} // namespace
} // namespace kelvo
