#include "platform/plugins/CFPlugInInstance.h"

#include "platform/foundation/NSData.h"
#include "platform/foundation/NSException.h"
#include "platform/foundation/NSFileManager.h"
#include "platform/foundation/NSStringFormat.h"
#include "platform/foundation/Value.h"
#include "platform/ledger/RequestNotes.h"
#include "platform/plugins/ImporterEngineMessages.h"
#include "platform/plugins/PlugInEngine.h"
#include "platform/plugins/PlugInQuestions.h"

#include <stdexcept>
#include <string>
#include <utility>

namespace kelvo {
namespace {

using namespace importerengine;

// What an importer may set, as mdimporter.h tells its makers; text takes twice the room here. That the engine, which
// counts as well, still does what it should is not relied on.
constexpr std::size_t mostReports = 65'536;
constexpr std::size_t mostBytes = 256ULL << 20;

Value numberOf(std::uint64_t number) {
    return NSNumber::numberWithLongLong(static_cast<long long>(number));
}

/// 0 when the answer is none.
std::uint64_t objectIn(const Value& answer) {
    const NSNumber* const number = answer.numberIfAny();
    return number ? static_cast<std::uint64_t>(number->longLongValue()) : 0;
}

Value dataOf(const CFUUID& uuid) {
    return NSData::dataWithBytes(uuid.bytes.data(), uuid.bytes.size());
}

std::size_t lengthOfValue(const Value& value) {
    return sizeof value + 2 * value.string().length() + value.data().length();
}

/// Takes what is reported into a dictionary, within its bounds.
class Filling {
public:
    explicit Filling(NSMutableDictionary& attributes) : attributes_(attributes) {}

    void operator()(const Value& part) {
        const NSArray attribute = part.array();
        if (attribute.count() == 0 || attribute.count() > 2 || !attribute.objectAtIndex(0).isString())
            return;
        const Value value = attribute.count() == 2 ? attribute.objectAtIndex(1) : Value(NSNull());
        bytes_ += lengthOfValue(attribute.objectAtIndex(0)) + lengthOfValue(value);
        for (const Value& each : value.array())
            bytes_ += lengthOfValue(each);
        if (++reports_ > mostReports || bytes_ > mostBytes)
            throw NSException(NSMallocException, u"The importer sets more than it may.");
        attributes_.setObject_forKey(value, attribute.objectAtIndex(0));
    }

private:
    NSMutableDictionary& attributes_;
    std::size_t reports_ = 0;
    std::size_t bytes_ = 0;
};

} // namespace

std::unique_ptr<CFPlugInInstance> CFPlugInInstanceCreate(const CFUUID& factory, const CFUUID& type,
                                                         const CFPlugIn& plugIn) {
    const NSString function = nameOfFactoryFunction(factory, plugIn);
    const auto library = plugIn.library();
    if (function.isNil() || !library) {
        noteOutcome(Outcome::missingEngine,
                    stringWithFormat(u"the %@ has no library or no factory", titleOfPlugIn(plugIn)));
        return nullptr;
    }
    PlugInEngine& engine = PlugInEngine::engineForPlugIn(plugIn);
    const auto message = NSMutableDictionary::dictionaryWithObjectsAndKeys(
        {{createAction, actionKey},
         {NSFileManager::defaultManager().stringWithFileSystemRepresentation(*library), libraryKey},
         {function, functionKey},
         {dataOf(type), typeKey},
         {dataOf(importerInterfaceIdentifier), interfaceKey}});
    try {
        const NSArray made = engine.ask(message, plugIn, PlugInEngine::Message::first).array();
        const std::uint64_t number = made.count() > 0 ? objectIn(made.objectAtIndex(0)) : 0;
        const std::uint64_t importer = made.count() > 1 ? objectIn(made.objectAtIndex(1)) : 0;
        return number == 0 ? nullptr : std::make_unique<CFPlugInInstance>(engine, plugIn, number, importer);
    } catch (const NSException&) {
        // What became of it is noted, and another factory may do better.
        return nullptr;
    }
}

std::unique_ptr<ImporterInterface> CFPlugInInstance::QueryInterface(const CFUUID& interface) const {
    if (importer_ == 0 || interface != importerInterfaceIdentifier)
        return nullptr;
    return std::make_unique<ImporterInterface>(engine_, plugIn_, importer_);
}

void CFPlugInInstance::Release() const {
    engine_.release(number_);
}

bool ImporterInterface::ImporterImportData(NSMutableDictionary& attributes, const NSString& contentType,
                                           const NSString& path) const {
    auto message = NSMutableDictionary::dictionaryWithObjectsAndKeys({{importAction, actionKey},
                                                                      {numberOf(number_), objectKey},
                                                                      {contentType, contentTypeKey},
                                                                      {path, pathKey}});
    const ImportedFile file{path, contentType, NSData::dataWithContentsOfFileWhenNeeded(path)};
    if (!file.contents.isNil())
        message.setObject_forKey(file.contents, fileKey);
    EngineConversation conversation;
    conversation.reports = Filling(attributes);
    conversation.questions = [&](const Value& question) {
        return answerToPlugIn(question.dictionary(), file, plugIn_.secondsLeft());
    };
    const Value answer =
        engine_.ask(message, plugIn_, PlugInEngine::Message::continued, std::move(conversation));
    const NSDictionary thrown = answer.dictionary();
    if (thrown.isNil()) {
        const NSNumber* const result = answer.numberIfAny();
        return result && result->boolValue();
    }
    const NSString name = thrown.objectForKey(exceptionNameKey).string();
    const NSString sentence = stringWithFormat(u"the %@ gave up: %@", titleOfPlugIn(plugIn_),
                                               thrown.objectForKey(reasonKey).string());
    noteOutcome(Outcome::broken, sentence);
    if (name.isNil())
        throw std::runtime_error(sentence.UTF8String());
    throw NSException(name, thrown.objectForKey(reasonKey).string());
}

} // namespace kelvo
