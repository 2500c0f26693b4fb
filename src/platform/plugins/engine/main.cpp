#include "platform/engine/program/EngineProgram.h"
#include "platform/foundation/NSException.h"
#include "platform/foundation/NSFileManager.h"
#include "platform/foundation/NSStringFormat.h"
#include "platform/plugins/ImporterEngineMessages.h"
#include "platform/plugins/engine/PlugInHost.h"

#include <cstdint>
#include <cstring>
#include <exception>
#include <new>
#include <string>
#include <utility>

#include <cxxabi.h>

namespace kelvo {
namespace {

using namespace importerengine;

/// Absent bytes are zeros, by which nothing goes.
MDUUID identifierIn(const NSDictionary& message, const char16_t* key) {
    MDUUID identifier{};
    const NSData data = message.objectForKey(key).data();
    if (data.length() == sizeof identifier.bytes)
        std::memcpy(identifier.bytes, data.bytes().data(), sizeof identifier.bytes);
    return identifier;
}

/// 0 when there is none.
std::uint64_t numberIn(const NSDictionary& message, const char16_t* key) {
    const NSNumber* const number = message.objectForKey(key).numberIfAny();
    return number ? static_cast<std::uint64_t>(number->longLongValue()) : 0;
}

std::string pathIn(const NSDictionary& message, const char16_t* key) {
    return NSFileManager::defaultManager()
        .fileSystemRepresentationWithPath(message.objectForKey(key).string())
        .value_or("");
}

Value valueOfObject(std::uint64_t number) {
    return number == 0 ? Value() : Value(NSNumber::numberWithLongLong(static_cast<long long>(number)));
}

NSString nameOfExceptionInFlight() {
    const std::type_info* const type = abi::__cxa_current_exception_type();
    int status = -1;
    char* const name = type ? abi::__cxa_demangle(type->name(), nullptr, nullptr, &status) : nullptr;
    NSString result =
        NSString::stringByRepairingUTF8String(std::string("it threw ") + (name ? name : "what has no name"));
    std::free(name);
    return result;
}

class ImporterProgram final : public EngineProgram {
public:
    /// The folder of the plug-ins that read nothing else but what their libraries need; empty: those of others, which read
    /// what they like.
    explicit ImporterProgram(std::string folder) : folder_(std::move(folder)) {}

    ConfinementProfile profile(const std::string& folder) override {
        ConfinementProfile profile = EngineProgram::profile(folder);
        if (folder_.empty())
            profile.readable = {"/"};
        else
            profile.readable = {
                folder_,      "/usr/share/poppler",   "/usr/share/fonts", "/usr/local/share/fonts",
                "/etc/fonts", "/var/cache/fontconfig"};
        return profile;
    }

    Value answerTo(const Value& asked, EngineChannel& channel) override {
        const NSDictionary message = asked.dictionary();
        if (const std::uint64_t released = numberIn(message, releasedKey); released != 0)
            guarded(message, channel, [&] {
                host_.release(released);
                return Value();
            });
        const NSString action = message.objectForKey(actionKey).string();
        if (action == createAction)
            return create(message, channel);
        return action == importAction ? import(message, channel) : Value();
    }

private:
    /// Nil, and noted, when the plug-in throws.
    template <typename Call>
    static Value guarded(const NSDictionary& message, EngineChannel& channel, const Call& call) {
        NSString reason;
        try {
            return call();
        } catch (const std::bad_alloc&) {
            throw;
        } catch (const NSException& exception) {
            reason = exception.reason();
        } catch (const std::exception& exception) {
            reason = NSString::stringByRepairingUTF8String(exception.what());
        } catch (...) {
            reason = nameOfExceptionInFlight();
        }
        channel.note(
            Outcome::missingEngine,
            stringWithFormat(u"the %@ cannot be used: %@", message.objectForKey(titleKey).string(), reason));
        return {};
    }

    Value create(const NSDictionary& message, EngineChannel& channel) {
        std::uint64_t number = 0;
        const Value object = guarded(message, channel, [&] {
            number = host_.create(pathIn(message, libraryKey),
                                  message.objectForKey(functionKey).string().UTF8String(),
                                  identifierIn(message, typeKey));
            return valueOfObject(number);
        });
        if (object.isNil())
            return {};
        NSMutableArray made = NSMutableArray::array();
        made.addObject(object);
        const Value interface = guarded(message, channel, [&] {
            return valueOfObject(host_.query(number, identifierIn(message, interfaceKey)));
        });
        if (!interface.isNil())
            made.addObject(interface);
        return made;
    }

    Value import(const NSDictionary& message, EngineChannel& channel) const {
        PlugInAttributes attributes(
            message.objectForKey(fileKey).data(),
            [&](const NSArray& attribute) { channel.report(attribute); },
            [&](Outcome outcome, const NSString& sentence) { channel.note(outcome, sentence); },
            [&](const NSDictionary& question) { return channel.ask(question).value_or(Value()).data(); });
        NSString name;
        NSString reason;
        try {
            return NSNumber::numberWithBool(host_.import(
                numberIn(message, objectKey), attributes,
                message.objectForKey(contentTypeKey).string().UTF8String(), pathIn(message, pathKey)));
        } catch (const PlugInRaise& raised) {
            name = raised.name;
            reason = raised.reason;
        } catch (const std::bad_alloc&) {
            throw;
        } catch (const std::exception& exception) {
            reason = NSString::stringByRepairingUTF8String(exception.what());
        } catch (...) {
            reason = nameOfExceptionInFlight();
        }
        return NSMutableDictionary::dictionaryWithObjectsAndKeys(
            {{reason, reasonKey}, {name, exceptionNameKey}});
    }

    std::string folder_;
    PlugInHost host_;
};

} // namespace
} // namespace kelvo

int main(int argumentCount, char** arguments) {
    std::string folder;
    for (int index = 2; index + 1 < argumentCount; ++index) {
        if (std::string_view(arguments[index]) == kelvo::importerengine::onlyArgument)
            folder = arguments[index + 1];
    }
    kelvo::ImporterProgram program(std::move(folder));
    return kelvo::runEngine(program, argumentCount, arguments);
}
