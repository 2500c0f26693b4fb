// A service on the real transport whose root object does what the name of the file tells it to, so that tests
// can watch slow, failing and dying operations from outside.

#include "platform/foundation/NSException.h"
#include "platform/foundation/Value.h"
#include "platform/foundation/connections/NSConnection.h"
#include "platform/foundation/connections/NSRunLoop.h"
#include "platform/foundation/processes/ServiceProcess.h"
#include "protocol/KelvoImExport.h"
#include "protocol/KelvoImExportAdapter.h"

#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <fstream>
#include <limits>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

namespace {

using namespace kelvo;

double now() {
    return NSDate::date().timeIntervalSinceReferenceDate();
}

/// Runs the loop for so long, whatever it performs.
void runLoopFor(double seconds) {
    const NSDate end = NSDate::dateWithTimeIntervalSinceReferenceDate(now() + seconds);
    while (now() < end.timeIntervalSinceReferenceDate())
        NSRunLoop::currentRunLoop().runMode_beforeDate(NSDefaultRunLoopMode, end);
}

NSDictionary everyKind() {
    NSMutableDictionary all = NSMutableDictionary::dictionary();
    const auto put = [&all](const char16_t* key, const Value& value) { all.setObject_forKey(value, key); };
    put(u"null", NSNull());
    put(u"true", NSNumber::numberWithBool(true));
    put(u"int32", NSNumber::numberWithInt(std::numeric_limits<std::int32_t>::min()));
    put(u"int64", NSNumber::numberWithLongLong(std::numeric_limits<std::int64_t>::max()));
    put(u"float", NSNumber::numberWithFloat(0.1f));
    put(u"double", NSNumber::numberWithDouble(-1e300));
    put(u"empty", NSString::string());
    put(u"units", NSString(std::u16string_view(u"\0\xD800x\xDC80\xFFFF", 5)));
    put(u"data", NSData::dataWithBytes("\0\1\377", 3));
    put(u"no data", NSData::data());
    put(u"date", NSDate::dateWithTimeIntervalSinceReferenceDate(-0.25));
    put(u"url", NSURL::URLWithString_relativeToURL(u"b?c#d", NSURL::URLWithString(u"http://example.org/a/")));
    put(u"array", NSArray::arrayWithObjects({NSArray::array(), NSNull(), u"x"}));
    put(u"size", NSSize{612, 0.5f});
    put(u"color", NSColor{0, 0.25f, 1, 0.5f});
    NSMutableDictionary inner = NSMutableDictionary::dictionary();
    inner.setObject_forKey(u"by number", NSNumber::numberWithInt(7));
    put(u"dictionary", inner);
    return all;
}

class Rehearsal final : public NSObject, public KelvoImExport {
public:
    /// "/sleep N", "/nest N", "/throw", "/die", "/die unless FILE" (which it makes), "/every kind", "/deep
    /// N"; anything else is given back at once.
    NSDictionary metaDataForFile(const NSString& file) override {
        std::istringstream words(file.UTF8String());
        std::string word;
        double seconds = 0;
        words.ignore(1);
        words >> word;
        const double begin = now();
        if (word == "throw")
            throw NSException(u"NSRehearsalException", u"Thrown: as told.");
        if (word == "die") {
            std::string unless, marker;
            if (words >> unless >> marker && std::ifstream(marker))
                return NSMutableDictionary::dictionaryWithObjectsAndKeys({{u"survived", u"outcome"}});
            std::ofstream(marker).put('x');
            _exit(1);
        }
        if (word == "every")
            return everyKind();
        if (word == "deep") {
            int levels = 0;
            words >> levels;
            Value value = u"bottom";
            for (int level = 0; level < levels; ++level)
                value = NSArray::arrayWithObjects({value});
            return NSMutableDictionary::dictionaryWithObjectsAndKeys({{value, u"deep"}});
        }
        words >> seconds;
        if (word == "sleep")
            std::this_thread::sleep_for(std::chrono::duration<double>(seconds));
        if (word == "nest")
            runLoopFor(seconds);
        if (file.isNil())
            return nullptr;
        return NSMutableDictionary::dictionaryWithObjectsAndKeys(
            {{file, u"file"},
             {NSNumber::numberWithDouble(begin), u"begin"},
             {NSNumber::numberWithDouble(now()), u"end"}});
    }

    NSData RTFDWithHTML_baseURL_allowRemoteRequest(const NSData& html, const NSURL& baseURL,
                                                   bool allow) override {
        const std::string seen = (html.isNil() ? "nil" : std::to_string(html.length())) + " " +
                                 baseURL.absoluteString().UTF8String() + (allow ? " yes" : " no");
        return html.length() > 1000 ? html : NSData::dataWithBytes(seen);
    }

    bool writeRTFDData_toFile(const NSData&, const NSString& file) override {
        if (file.UTF8String().ends_with("sleep"))
            std::this_thread::sleep_for(std::chrono::seconds(30));
        return true;
    }

    NSDictionary searchableTextOfWebArchive(const NSString&) override { return NSDictionary::dictionary(); }
    NSDictionary attributedStringWithContentsOfFile(const NSString&) override { return nullptr; }
    NSDictionary posterImageForMovieWithFile(const NSString&) override { return nullptr; }

    NSDictionary attributed_stringWithPDF(bool attributed, const NSData& pdf) override {
        return NSMutableDictionary::dictionaryWithObjectsAndKeys(
            {{NSNumber::numberWithBool(attributed), u"attributed"},
             {NSNumber::numberWithLongLong(static_cast<std::int64_t>(pdf.length())), u"length"}});
    }

    NSDictionary imageWithContentsOfFile_stringFromPDF_canUseSpotlight(const NSString& file, bool text,
                                                                       bool importers) override {
        return NSMutableDictionary::dictionaryWithObjectsAndKeys(
            {{file, u"file"},
             {NSNumber::numberWithBool(text), u"text"},
             {NSNumber::numberWithBool(importers), u"importers"}});
    }

    /// As many bytes as the last component of the path says.
    NSData PDFImageRepOfFile(const NSString& file) override {
        const std::string path = file.UTF8String();
        const std::size_t length = std::stoull(path.substr(path.rfind('/') + 1));
        return NSData::dataWithBytesNoCopy(std::vector<std::uint8_t>(length));
    }
};

} // namespace

int main() {
    kelvo::becomeServiceProcess();
    NSConnection& connection = NSConnection::defaultConnection();
    connection.setRootObject(vendedObject(std::make_shared<Rehearsal>()));
    connection.registerName(KelvoImExport::registeredName);
    connection.setIndependentConversationQueueing(std::getenv("REHEARSAL_NESTS") == nullptr);
    for (;;)
        NSRunLoop::currentRunLoop().run();
}
