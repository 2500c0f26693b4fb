#include "platform/plugins/engine/PlugInAttributes.h"

#include "platform/foundation/Value.h"
#include "platform/plugins/ImporterEngineMessages.h"

#include <cmath>
#include <cstring>
#include <optional>
#include <span>
#include <utility>

namespace kelvo {
namespace {

/// What an attribute takes beside its value.
constexpr std::size_t bytesOfAttribute = 64;

NSString stringOf(const void* bytes, std::size_t length) {
    return NSString::stringByRepairingUTF8String({static_cast<const char*>(bytes), length});
}

/// Absent when it is of no type, or has no bytes where it says that it has.
std::optional<Value> valueOf(const MDValue& value) {
    const auto& span = value.as.span;
    switch (value.type) {
    case MDValueString:
        return span.bytes || span.length == 0 ? std::optional<Value>(stringOf(span.bytes, span.length))
                                              : std::nullopt;
    case MDValueInteger:
        return NSNumber::numberWithLongLong(value.as.integer);
    case MDValueReal:
        return NSNumber::numberWithDouble(value.as.real);
    case MDValueBoolean:
        return NSNumber::numberWithBool(value.as.integer != 0);
    case MDValueDate:
        return std::isfinite(value.as.real)
                   ? std::optional<Value>(NSDate::dateWithTimeIntervalSince1970(value.as.real))
                   : std::nullopt;
    case MDValueData:
        return span.bytes || span.length == 0
                   ? std::optional<Value>(NSData::dataWithBytes(span.bytes, span.length))
                   : std::nullopt;
    default:
        return std::nullopt;
    }
}

bool hasSpan(const MDValue& value) {
    return value.type == MDValueString || value.type == MDValueData;
}

std::optional<Outcome> outcomeOfNote(int kind) {
    switch (kind) {
    case MDNoteIncomplete:
        return Outcome::answered;
    case MDNoteUnsupported:
        return Outcome::unsupported;
    case MDNoteBroken:
        return Outcome::broken;
    case MDNoteLocked:
        return Outcome::locked;
    default:
        return std::nullopt;
    }
}

} // namespace

struct PlugInAttributes::Functions {
    static const MDAttributesFunctions table;

    static PlugInAttributes& self(MDAttributes* attributes) {
        return *static_cast<PlugInAttributes*>(attributes);
    }

    static int setOne(MDAttributes* attributes, const char* name, const MDValue& value) {
        const std::size_t length = hasSpan(value) ? value.as.span.length : 0;
        return self(attributes).set(name, length, [&] { return valueOf(value); }) ? 1 : 0;
    }

    static MDValue valueOfReal(std::uint32_t type, double real) {
        MDValue value{type, 0, {}};
        value.as.real = real;
        return value;
    }

    static MDValue valueOfSpan(std::uint32_t type, const void* bytes, std::size_t length) {
        MDValue value{type, 0, {}};
        value.as.span = {bytes, length};
        return value;
    }

    static int setString(MDAttributes* attributes, const char* name, const char* text, std::size_t length) {
        return setOne(attributes, name, valueOfSpan(MDValueString, text, length));
    }

    static int setInteger(MDAttributes* attributes, const char* name, std::int64_t integer) {
        return setOne(attributes, name, {MDValueInteger, 0, {integer}});
    }

    static int setReal(MDAttributes* attributes, const char* name, double real) {
        return setOne(attributes, name, valueOfReal(MDValueReal, real));
    }

    static int setBoolean(MDAttributes* attributes, const char* name, int value) {
        return setOne(attributes, name, {MDValueBoolean, 0, {value}});
    }

    static int setDate(MDAttributes* attributes, const char* name, double seconds) {
        return setOne(attributes, name, valueOfReal(MDValueDate, seconds));
    }

    static int setData(MDAttributes* attributes, const char* name, const void* bytes, std::size_t length) {
        return setOne(attributes, name, valueOfSpan(MDValueData, bytes, length));
    }

    static int setNull(MDAttributes* attributes, const char* name) {
        return self(attributes).set(name, 0, [] { return std::optional<Value>(NSNull()); }) ? 1 : 0;
    }

    static int setArray(MDAttributes* attributes, const char* name, const MDValue* values,
                        std::size_t count) {
        if (count > MD_MOST_VALUES || (!values && count > 0))
            return 0;
        const std::span<const MDValue> all(values, count);
        std::size_t length = 0;
        for (const MDValue& value : all) {
            if (hasSpan(value) && value.as.span.length > MD_MOST_BYTES)
                return 0;
            length += sizeof value + (hasSpan(value) ? value.as.span.length : 0);
        }
        const auto makeArray = [&]() -> std::optional<Value> {
            NSMutableArray array = NSMutableArray::array();
            for (const MDValue& each : all) {
                auto value = valueOf(each);
                if (!value)
                    return std::nullopt;
                array.addObject(*value);
            }
            return array;
        };
        return self(attributes).set(name, length, makeArray) ? 1 : 0;
    }

    static int fileDescriptor(MDAttributes* attributes) { return self(attributes).file_.descriptor(); }

    static const void* fileBytes(MDAttributes* attributes, std::size_t* length) {
        const auto bytes = self(attributes).file_.bytes();
        *length = bytes.size();
        return bytes.empty() ? nullptr : bytes.data();
    }

    static void note(MDAttributes* attributes, int kind, const char* sentence) {
        const auto outcome = outcomeOfNote(kind);
        if (outcome && sentence)
            self(attributes).note_(*outcome, stringOf(sentence, std::strlen(sentence)));
    }

    static void raise(MDAttributes*, const char* name, const char* reason) {
        const auto text = [](const char* given) {
            return given ? stringOf(given, std::strlen(given)) : NSString(u"");
        };
        throw PlugInRaise{text(name), text(reason)};
    }

    static const void* packageFileBytes(MDAttributes* attributes, const char* name, std::size_t* length) {
        *length = 0;
        if (!name)
            return nullptr;
        return self(attributes)
            .answerTo(NSMutableDictionary::dictionaryWithObjectsAndKeys(
                          {{importerengine::packageFileQuestion, importerengine::questionKey},
                           {stringOf(name, ::strnlen(name, MD_LONGEST_NAME)), importerengine::nameKey}}),
                      length);
    }

    static const void* officeDocumentBytes(MDAttributes* attributes, std::size_t* length) {
        return self(attributes)
            .answerTo(NSMutableDictionary::dictionaryWithObjectsAndKeys(
                          {{importerengine::officeDocumentQuestion, importerengine::questionKey}}),
                      length);
    }
};

const MDAttributesFunctions PlugInAttributes::Functions::table = {sizeof(MDAttributesFunctions),
                                                                  Functions::setString,
                                                                  Functions::setInteger,
                                                                  Functions::setReal,
                                                                  Functions::setBoolean,
                                                                  Functions::setDate,
                                                                  Functions::setData,
                                                                  Functions::setNull,
                                                                  Functions::setArray,
                                                                  Functions::fileDescriptor,
                                                                  Functions::fileBytes,
                                                                  Functions::note,
                                                                  Functions::raise,
                                                                  Functions::packageFileBytes,
                                                                  Functions::officeDocumentBytes};

PlugInAttributes::PlugInAttributes(NSData file, Report report, Note note, Ask ask)
    : MDAttributes{&Functions::table},
      file_(std::move(file)),
      report_(std::move(report)),
      note_(std::move(note)),
      ask_(std::move(ask)) {}

const void* PlugInAttributes::answerTo(const NSDictionary& question, std::size_t* length) {
    *length = 0;
    if (!ask_ || questions_ == MD_MOST_QUESTIONS)
        return nullptr;
    ++questions_;
    NSData answer = ask_(question);
    const auto bytes = answer.bytes();
    if (bytes.empty())
        return nullptr;
    answers_.push_back(std::move(answer));
    *length = bytes.size();
    return bytes.data();
}

template <typename MakeValue>
bool PlugInAttributes::set(const char* name, std::size_t lengthInBytes, const MakeValue& makeValue) {
    if (!name)
        return false;
    const std::size_t lengthOfName = ::strnlen(name, MD_LONGEST_NAME + 1);
    if (lengthOfName == 0 || lengthOfName > MD_LONGEST_NAME || lengthInBytes > MD_MOST_BYTES)
        return false;
    // What is set again counts again: that it goes through memory twice is what is bounded.
    const std::size_t length = lengthInBytes_ + lengthInBytes + lengthOfName + bytesOfAttribute;
    const std::string_view text(name, lengthOfName);
    if (length > MD_MOST_BYTES || (!names_.contains(text) && names_.size() == MD_MOST_ATTRIBUTES))
        return false;
    const std::optional<Value> value = makeValue();
    if (!value)
        return false;
    lengthInBytes_ = length;
    names_.emplace(text);
    NSMutableArray attribute = NSMutableArray::array();
    attribute.addObject(stringOf(name, lengthOfName));
    if (!value->isNull())
        attribute.addObject(*value);
    report_(attribute);
    return true;
}

} // namespace kelvo
