#include "platform/postscript/PostScriptPDF.h"

#include "platform/foundation/NSException.h"
#include "platform/foundation/SealedMemory.h"
#include "platform/ledger/RequestNotes.h"
#include "platform/postscript/PostScriptEngine.h"
#include "platform/postscript/PostScriptEngineMessages.h"
#include "platform/postscript/PostScriptFile.h"

#include <cstdint>

namespace kelvo {
namespace {

using namespace postscriptengine;

bool isSide(float length) {
    return length >= PostScriptFile::shortestSide && length <= PostScriptFile::longestSide;
}

NSNumber number(std::size_t value) {
    return NSNumber::numberWithLongLong(static_cast<std::int64_t>(value));
}

NSDictionary messageAbout(const NSData& data, const PostScriptFile& file, NSSize size) {
    const NSRect page = file.page();
    return NSMutableDictionary::dictionaryWithObjectsAndKeys({
        {data.descriptor() < 0 && data.length() >= leastSealedBytes ? dataForOtherProcesses(data.characters())
                                                                    : data,
         fileKey},
        {number(file.program.location), beginKey},
        {number(file.program.length), lengthKey},
        {NSNumber::numberWithDouble(page.origin.x), leftKey},
        {NSNumber::numberWithDouble(page.origin.y), bottomKey},
        {NSNumber::numberWithDouble(page.size.width), boxWidthKey},
        {NSNumber::numberWithDouble(page.size.height), boxHeightKey},
        {NSNumber::numberWithDouble(size.width), widthKey},
        {NSNumber::numberWithDouble(size.height), heightKey},
        {NSNumber::numberWithBool(file.boundingBox.has_value()), hasBoxKey},
    });
}

} // namespace

NSData PDFDataOfPostScript(const NSData& postscript, NSSize size, double seconds) {
    if (!isSide(size.width) || !isSide(size.height))
        return nullptr;
    const auto file = PostScriptFile::read(postscript);
    if (!file) {
        noteOutcome(Outcome::broken, u"it is no PostScript");
        return nullptr;
    }
    if (postscript.length() > longestPostScript) {
        noteOutcome(Outcome::outOfMemory, u"it is longer than what is interpreted");
        return nullptr;
    }
    try {
        return PostScriptEngine::sharedEngine().ask(messageAbout(postscript, *file, size), seconds).data();
    } catch (const NSException&) {
        // What became of the engine is noted.
        return nullptr;
    }
}

} // namespace kelvo
