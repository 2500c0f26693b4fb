// A service on the real transport whose root object does what the name of the file tells it to, so that tests
// can watch slow, failing and dying operations from outside.

#include "platform/foundation/NSException.h"
#include "platform/foundation/Value.h"
#include "platform/foundation/connections/NSConnection.h"
#include "platform/foundation/connections/NSRunLoop.h"
#include "platform/foundation/processes/ServiceProcess.h"
#include "platform/foundation/propertylists/NSPropertyListSerialization.h"
#include "platform/ledger/EngineRegistry.h"
#include "platform/ledger/RequestLedger.h"
#include "protocol/KelvoImExport.h"
#include "protocol/KelvoImExportAdapter.h"
#include "protocol/ServiceLedger.h"

#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <fstream>
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

/// Empty for nil.
NSDictionary seenBy(const char16_t* operation, const NSString& file) {
    return file.isNil() ? NSDictionary::dictionary()
                        : NSMutableDictionary::dictionaryWithObjectsAndKeys({{file, operation}});
}

/// Does what the lines say: "note NUMBER SENTENCE", "refuse ADDRESS", "use ENGINE CPU BYTES", "start ENGINE LAYERS",
/// "sleep SECONDS", "throw REASON", "die". Whether one of them was "nil".
bool obey(std::istream& lines) {
    bool isNil = false;
    for (std::string line; std::getline(lines, line);) {
        std::istringstream words(line);
        std::string word, name, rest;
        double number = 0;
        words >> word;
        const auto remainder = [&] {
            std::getline(words >> std::ws, rest);
            return NSString::stringWithUTF8String(rest);
        };
        RequestNotes& notes = *RequestNotes::current();
        if (word == "note" && words >> number)
            notes.note(static_cast<Outcome>(number), remainder());
        else if (word == "refuse")
            notes.noteRefusedLoad(remainder());
        else if (word == "use" && words >> name >> number)
            notes.noteEngine({name, number, std::stoull(remainder().UTF8String())});
        else if (word == "start" && words >> name)
            noteEngineStarted(name, getpid(), remainder().UTF8String());
        else if (word == "sleep" && words >> number)
            std::this_thread::sleep_for(std::chrono::duration<double>(number));
        else if (word == "throw")
            throw NSException(u"NSRehearsalException", remainder());
        else if (word == "die")
            _exit(1);
        isNil = isNil || word == "nil";
    }
    return isNil;
}

class Rehearsal final : public NSObject, public KelvoImExport {
public:
    /// "/sleep N", "/nest N", "/throw", "/die", "/die unless FILE" (which it makes), "/deep N";
    /// of a property list what it holds, or nothing for its "damage"; anything else is given back at once.
    NSDictionary metaDataForFile(const NSString& file) override {
        if (file.UTF8String().ends_with(".plist")) {
            const NSDictionary facts =
                NSPropertyListSerialization::propertyListFromData_mutabilityOption_format_errorDescription(
                    NSData::dataWithContentsOfFile(file), NSPropertyListMutabilityOptions::immutable, nullptr,
                    nullptr)
                    .dictionary();
            const NSString damage = facts.objectForKey(u"damage").string();
            if (damage.isNil())
                return facts;
            RequestNotes::current()->note(Outcome::broken, damage);
            return NSMutableDictionary::dictionary();
        }
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
        std::istringstream lines(std::string(html.characters()));
        if (obey(lines))
            return nullptr;
        const std::string seen = (html.isNil() ? "nil" : std::to_string(html.length())) + " " +
                                 baseURL.absoluteString().UTF8String() + (allow ? " yes" : " no");
        return html.length() > 1000 ? html : NSData::dataWithBytes(seen);
    }

    bool writeRTFDData_toFile(const NSData& data, const NSString& file) override {
        if (file.UTF8String().ends_with("/die"))
            _exit(1);
        if (file.UTF8String().ends_with("sleep"))
            std::this_thread::sleep_for(std::chrono::seconds(30));
        // Data that are a path are to be the file's own.
        return !data.isNil() &&
               (!data.characters().starts_with('/') || data == NSData::dataWithBytes(file.UTF8String()));
    }

    NSDictionary searchableTextOfWebArchive(const NSString& file) override {
        return seenBy(u"archive", file);
    }
    NSDictionary attributedStringWithContentsOfFile(const NSString& file) override {
        std::ifstream lines(file.UTF8String());
        return obey(lines) ? NSDictionary() : seenBy(u"document", file);
    }
    NSDictionary posterImageForMovieWithFile(const NSString& file) override { return seenBy(u"movie", file); }

    NSDictionary attributed_stringWithPDF(bool attributed, const NSData& pdf) override {
        return NSMutableDictionary::dictionaryWithObjectsAndKeys(
            {{NSNumber::numberWithBool(attributed), u"attributed"},
             {NSNumber::numberWithLongLong(pdf.isNil() ? -1 : static_cast<std::int64_t>(pdf.length())),
              u"length"}});
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
        if (file.isNil())
            return nullptr;
        const std::string path = file.UTF8String();
        const std::size_t length = std::stoull(path.substr(path.rfind('/') + 1));
        return NSData::dataWithBytesNoCopy(std::vector<std::uint8_t>(length));
    }
};

} // namespace

int main() {
    kelvo::becomeServiceProcess();
    NSConnection& connection = NSConnection::defaultConnection();
    const auto ledger = std::make_shared<RequestLedger>();
    connection.setRootObject(vendedObject(std::make_shared<Rehearsal>(), ledger));
    if (connection.registerName(KelvoImExport::registeredName) && !std::getenv("REHEARSAL_WITHOUT_LEDGER"))
        ledger->open(pathOfServiceLedger());
    connection.setIndependentConversationQueueing(std::getenv("REHEARSAL_NESTS") == nullptr);
    for (;;)
        NSRunLoop::currentRunLoop().run();
}
