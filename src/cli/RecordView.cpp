#include "cli/RecordView.h"

#include "cli/Printable.h"
#include "cli/Request.h"
#include "platform/foundation/NSFileManager.h"

#include <fmt/format.h>

#include <cmath>

namespace kelvo::cli {
namespace {

std::string operationOf(const RequestRecord& record) {
    return record.operation < operationCount
               ? std::string(subcommandOfOperation(static_cast<Operation>(record.operation)))
               : fmt::format("operation {}", record.operation);
}

std::string wordOf(const RequestRecord& record) {
    return record.isCompleted ? wordOfOutcome(record.outcome).UTF8String() : "begun";
}

std::string hashOf(const RequestRecord& record) {
    return fmt::format("{:016x}", record.byteHash);
}

std::string fileOf(const RequestRecord& record) {
    if (record.path.isNil())
        return record.hasBytes ? fmt::format("{} ({})", printableByteCount(record.byteCount), hashOf(record))
                               : "nothing";
    const auto bytes = NSFileManager::defaultManager().fileSystemRepresentationWithPath(record.path);
    return bytes ? printableFileName(*bytes) : printable(record.path);
}

Value number(std::uint64_t value) {
    return NSNumber::numberWithLongLong(static_cast<std::int64_t>(value));
}

/// Microseconds are all that clocks tell.
Value milliseconds(double value) {
    return NSNumber::numberWithDouble(std::round(value * 1e3) / 1e3);
}

} // namespace

std::string outcomeOfRecord(const RequestRecord& record) {
    return wordOf(record) + (record.sentence.isNil() ? "" : ": " + printable(record.sentence));
}

std::string lineOfRecord(const RequestRecord& record) {
    return fmt::format("{:<19}  {:<13}  {:<14}  {:>9}  {}{}\n", printableLocalTime(record.begun),
                       operationOf(record), wordOf(record),
                       record.isCompleted ? printableMilliseconds(record.milliseconds) : "", fileOf(record),
                       record.sentence.isNil() ? "" : ": " + printable(record.sentence));
}

NSDictionary valueOfRecord(const RequestRecord& record) {
    NSMutableDictionary value = NSMutableDictionary::dictionary();
    if (record.sequence != 0)
        value.setObject_forKey(number(record.sequence), u"sequence");
    value.setObject_forKey(NSString::stringByRepairingUTF8String(operationOf(record)), u"operation");
    value.setObject_forKey(record.begun, u"begun");
    if (!record.path.isNil())
        value.setObject_forKey(record.path, u"file");
    if (record.hasBytes) {
        value.setObject_forKey(number(record.byteCount), u"bytes");
        value.setObject_forKey(NSString::stringByRepairingUTF8String(hashOf(record)), u"hash");
    }
    if (!record.isCompleted)
        return value;
    value.setObject_forKey(wordOfOutcome(record.outcome), u"outcome");
    if (!record.sentence.isNil())
        value.setObject_forKey(record.sentence, u"sentence");
    value.setObject_forKey(milliseconds(record.milliseconds), u"milliseconds");
    if (record.sequence == 0)
        return value;
    value.setObject_forKey(milliseconds(record.cpuMilliseconds), u"cpuMilliseconds");
    if (record.peakBytes != 0)
        value.setObject_forKey(number(record.peakBytes), u"peakBytes");
    if (!record.engine.isNil()) {
        value.setObject_forKey(record.engine, u"engine");
        value.setObject_forKey(milliseconds(record.engineCPUMilliseconds), u"engineCPUMilliseconds");
        value.setObject_forKey(number(record.enginePeakBytes), u"enginePeakBytes");
    }
    if (record.refusedLoadCount != 0) {
        NSMutableArray addresses = NSMutableArray::array();
        for (const NSString& address : record.refusedAddresses)
            addresses.addObject(address);
        value.setObject_forKey(number(record.refusedLoadCount), u"refusedLoads");
        value.setObject_forKey(addresses, u"refusedAddresses");
    }
    return value;
}

} // namespace kelvo::cli
