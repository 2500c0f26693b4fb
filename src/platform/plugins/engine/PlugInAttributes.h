#pragma once

#include "platform/foundation/NSArray.h"
#include "platform/foundation/NSData.h"
#include "platform/foundation/NSDictionary.h"
#include "platform/ledger/Outcome.h"

#include <plumwick/mdimporter.h>

#include <cstddef>
#include <functional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace kelvo {

/// What leaves ImporterImportData when a plug-in raises. Not a std::exception, so that the handlers of plug-ins for these
/// let it through.
struct PlugInRaise {
    NSString name;
    NSString reason;
};

/// The attributes of one file as a plug-in sees them: what is set goes to `report`, the rest is counted. None of its
/// functions throws into a plug-in but `raise`, and what report throws.
class PlugInAttributes : public MDAttributes {
public:
    /// Each attribute that is set: an array of its name and its value; of the name alone when that is null.
    using Report = std::function<void(const NSArray& attribute)>;
    using Note = std::function<void(Outcome outcome, const NSString& sentence)>;

    /// Answers a question of ImporterEngineMessages.h with data, or nil.
    using Ask = std::function<NSData(const NSDictionary& question)>;

    /// The file may be nil; see SealedMemory.h for one that stands on a descriptor.
    PlugInAttributes(NSData file, Report report, Note note, Ask ask = {});
    PlugInAttributes(const PlugInAttributes&) = delete;
    PlugInAttributes& operator=(const PlugInAttributes&) = delete;

private:
    /// What plug-ins are given, as functions of C.
    struct Functions;

    /// Whether the attribute was reported: it is not when its name or its size is not allowed. `makeValue` is called only
    /// when they are.
    template <typename MakeValue>
    bool set(const char* name, std::size_t lengthInBytes, const MakeValue& makeValue);

    /// The bytes of the answer, which stay as long as this object; null when there are none.
    const void* answerTo(const NSDictionary& question, std::size_t* length);

    NSData file_;
    Report report_;
    Note note_;
    Ask ask_;
    std::vector<NSData> answers_;
    std::size_t questions_ = 0;
    std::size_t lengthInBytes_ = 0;
    std::set<std::string, std::less<>> names_;
};

} // namespace kelvo
