#include "platform/pdfkit/PDFEngine.h"

#include "platform/engine/EngineExceptions.h"
#include "platform/foundation/NSException.h"
#include "platform/ledger/RequestNotes.h"

#include <chrono>
#include <exception>

namespace kelvo {
namespace {

using namespace pdfengine;
using Clock = std::chrono::steady_clock;

/// A document that is mapped counts like memory of the engine's own, and must not have it replaced after every page.
constexpr std::uint64_t mostResidentBytes = 1ULL << 30;
constexpr double secondsToClose = 1;

EngineDescription description() {
    EngineDescription description;
    description.programName = programName;
    description.title = u"PDF engine";
    description.mostResidentBytes = mostResidentBytes;
    // The library makes and drops small blocks by the million, and an engine has a second thread, for which the C
    // library locks whatever this cache does not hold: by itself 7 blocks of a size.
    description.environment = {{"GLIBC_TUNABLES", "glibc.malloc.tcache_count=4000"}};
    return description;
}

bool isNotOpen(const Value& answer) {
    const NSNumber* const number = answer.numberIfAny();
    return number && number->boolValue() == notOpen;
}

NSMutableDictionary messageAbout(const OpenPDF& document) {
    return NSMutableDictionary::dictionaryWithObjectsAndKeys(
        {{NSNumber::numberWithLongLong(document.number), numberKey}});
}

} // namespace

OpenPDF::~OpenPDF() {
    PDFEngine::sharedEngine().close(*this);
}

PDFEngine::PDFEngine() : process_(description()) {}

PDFEngine& PDFEngine::sharedEngine() {
    // Never destroyed, because the run loop that it stands on goes first: it ends with the process.
    static PDFEngine* const engine = new PDFEngine;
    return *engine;
}

NSDictionary PDFEngine::open(const OpenPDF& document, double timeoutSeconds) {
    openNumber_ = 0;
    NSMutableDictionary message = messageAbout(document);
    message.setObject_forKey(document.data, documentKey);
    NSDictionary facts = process_.ask(message, timeoutSeconds).dictionary();
    if (!facts.isNil()) {
        openNumber_ = document.number;
        openIn_ = process_.processIdentifier();
    }
    return facts;
}

Value PDFEngine::read(const OpenPDF& document, Want want, std::size_t page, double timeoutSeconds,
                      NSMutableDictionary message) {
    const Clock::time_point start = Clock::now();
    const auto secondsLeft = [&] {
        return timeoutSeconds - std::chrono::duration<double>(Clock::now() - start).count();
    };
    message.setObject_forKey(NSNumber::numberWithLongLong(document.number), numberKey);
    message.setObject_forKey(NSNumber::numberWithLongLong(static_cast<std::int64_t>(page)), pageKey);
    message.setObject_forKey(NSNumber::numberWithInt(static_cast<int>(want)), wantKey);
    // An engine that has ended unnoticed, or had to be replaced, says so by its answer.
    if (openNumber_ == document.number) {
        Value answer = process_.ask(message, secondsLeft());
        if (!isNotOpen(answer))
            return answer;
    }
    if (open(document, secondsLeft()).isNil()) {
        noteOutcome(Outcome::broken, u"it cannot be opened once more");
        throw NSException(EngineCrashedException, u"The document cannot be opened once more.");
    }
    Value answer = process_.ask(message, secondsLeft());
    return isNotOpen(answer) ? Value() : answer;
}

void PDFEngine::close(const OpenPDF& document) noexcept {
    if (openNumber_ != document.number || openIn_ != process_.processIdentifier())
        return;
    openNumber_ = 0;
    try {
        process_.ask(messageAbout(document), secondsToClose);
    } catch (const std::exception&) {
        // The engine is gone, and the document with it.
    }
}

} // namespace kelvo
