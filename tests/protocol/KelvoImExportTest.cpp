#include "platform/foundation/NSException.h"
#include "platform/foundation/Value.h"
#include "platform/foundation/connections/NSConnection.h"
#include "platform/foundation/processes/NSTask.h"
#include "platform/ledger/LedgerReader.h"
#include "protocol/KelvoImExportProxy.h"
#include "protocol/Operations.h"
#include "protocol/ServiceLedger.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <iterator>
#include <set>
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

    KelvoImExportProxy& proxy() { return *proxy_; }
    const tests::TemporaryFolder& folder() const { return folder_; }
    /// Of the latest request.
    RequestRecord record() {
        const auto ledger = LedgerReader::open(pathOfServiceLedger());
        return ledger.value().recordOfToken(proxy().latestToken()).value_or(RequestRecord());
    }
    NSConnection& connection() { return *connection_; }

private:
    tests::TemporaryFolder folder_;
    NSTask service_;
    std::unique_ptr<NSConnection> connection_;
    std::unique_ptr<KelvoImExportProxy> proxy_;
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
    // So that no answer is quicker than that.
    const pid_t service = connection().peerProcessIdentifier();
    ASSERT_GT(service, 0);
    kill(service, SIGSTOP);
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
    kill(service, SIGCONT);
}

TEST_F(KelvoImExportTest, EachRequestIsWrittenDownUnderItsOwnOperation) {
    const NSData abc = NSData::dataWithBytes("abc");
    const struct {
        const char* name;
        std::function<void()> ask;
        NSString path;
        bool hasBytes;
        Outcome outcome;
    } rows[] = {
        {"metadata", [&] { proxy().metaDataForFile(u"/a"); }, u"/a", false, Outcome::answered},
        {"page", [&] { proxy().RTFDWithHTML_baseURL_allowRemoteRequest(abc, nullptr, false); }, nullptr, true,
         Outcome::answered},
        {"writing", [&] { proxy().writeRTFDData_toFile(abc, u"/b"); }, u"/b", true, Outcome::answered},
        {"archive", [&] { proxy().searchableTextOfWebArchive(u"/c"); }, u"/c", false, Outcome::nothing},
        {"document", [&] { proxy().attributedStringWithContentsOfFile(u"/d"); }, u"/d", false,
         Outcome::answered},
        {"movie", [&] { proxy().posterImageForMovieWithFile(u"/e"); }, u"/e", false, Outcome::answered},
        {"PDF", [&] { proxy().attributed_stringWithPDF(true, abc); }, nullptr, true, Outcome::answered},
        {"image", [&] { proxy().imageWithContentsOfFile_stringFromPDF_canUseSpotlight(u"/f", true, true); },
         u"/f", false, Outcome::answered},
        {"drawing", [&] { proxy().PDFImageRepOfFile(nullptr); }, nullptr, false, Outcome::nothing},
    };
    static_assert(std::size(rows) == operationCount);
    for (std::size_t index = 0; index < operationCount; ++index) {
        const auto& row = rows[index];
        row.ask();
        const RequestRecord found = record();
        EXPECT_EQ(found.sequence, index + 1) << row.name;
        EXPECT_EQ(found.operation, index) << row.name;
        EXPECT_EQ(found.path, row.path) << row.name;
        EXPECT_EQ(found.hasBytes, row.hasBytes) << row.name;
        EXPECT_EQ(found.byteCount, row.hasBytes ? 3u : 0u) << row.name;
        EXPECT_TRUE(found.isCompleted) << row.name;
        EXPECT_EQ(found.outcome, row.outcome) << row.name;
    }
}

TEST_F(KelvoImExportTest, WhatIsLearntOfARequestIsWrittenDown) {
    const auto ask = [this](const std::string& told) {
        const NSString file = NSString::stringWithUTF8String(folder().write("told", told));
        try {
            proxy().attributedStringWithContentsOfFile(file);
        } catch (const NSException& exception) {
            EXPECT_EQ(exception.name(), u"NSRehearsalException");
        }
        return record();
    };
    const RequestRecord locked =
        ask("note 4 the document is encrypted\nuse reader 12.5 4096\nrefuse http://a/\nsleep 0.02\nnil\n");
    EXPECT_EQ(locked.outcome, Outcome::locked);
    EXPECT_EQ(locked.sentence, u"the document is encrypted");
    EXPECT_EQ(locked.engine, u"reader");
    EXPECT_EQ(locked.engineCPUMilliseconds, 12.5);
    EXPECT_EQ(locked.refusedAddresses, std::vector<NSString>{u"http://a/"});
    EXPECT_GE(locked.milliseconds, 20);
    const RequestRecord thrown = ask("throw the table is cut off");
    EXPECT_EQ(thrown.outcome, Outcome::broken);
    EXPECT_EQ(thrown.sentence, u"the table is cut off");
    EXPECT_TRUE(thrown.engine.isNil());
    EXPECT_EQ(ask("note 7 it took too long\nthrow too late").outcome, Outcome::timedOut);

    EXPECT_THROW(proxy().PDFImageRepOfFile(u"/536870912"), NSException);
    EXPECT_EQ(record().outcome, Outcome::broken) << "there was a result, and it cannot be sent";
}

TEST_F(KelvoImExportTest, NoTokenComesTwice) {
    const auto another = rootProxyForConnection(connection());
    std::set<std::uint64_t> tokens{0};
    for (int count = 0; count < 500; ++count) {
        for (KelvoImExportProxy* each : {&proxy(), another.get()}) {
            each->searchableTextOfWebArchive(nullptr);
            EXPECT_TRUE(tokens.insert(each->latestToken()).second);
        }
    }
}

TEST(Operations, SelectorsStandInTheSchema) {
    EXPECT_EQ(selectorOfOperation(Operation::metaDataForFile), u"metaDataForFile:");
    EXPECT_EQ(selectorOfOperation(Operation::RTFDWithHTML), u"RTFDWithHTML:baseURL:allowRemoteRequest:");
    EXPECT_EQ(selectorOfOperation(Operation::PDFImageRepOfFile), u"PDFImageRepOfFile:");
    EXPECT_TRUE(selectorOfOperation(static_cast<Operation>(operationCount)).isNil());
}

} // namespace
} // namespace kelvo
