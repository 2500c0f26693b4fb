#include "platform/ledger/RequestNotes.h"

#include "platform/foundation/units/ASCII.h"

#include <algorithm>

namespace kelvo {
namespace {

thread_local RequestNotes* currentNotes = nullptr;

} // namespace

RequestNotes::RequestNotes() : outer_(currentNotes) {
    currentNotes = this;
}

RequestNotes::~RequestNotes() {
    currentNotes = outer_;
}

RequestNotes* RequestNotes::current() {
    return currentNotes;
}

void RequestNotes::note(Outcome outcome, const NSString& sentence) {
    if (outcome == Outcome::answered) {
        if (sentenceOfResult_.isNil())
            sentenceOfResult_ = sentence;
        return;
    }
    if (outcome_ && *outcome_ >= outcome)
        return;
    outcome_ = outcome;
    sentence_ = sentence;
}

void RequestNotes::noteEngine(const EngineUse& use) {
    const auto found = std::ranges::find(engines_, use.name, &EngineUse::name);
    if (found == engines_.end()) {
        engines_.push_back(use);
        return;
    }
    found->cpuMilliseconds += use.cpuMilliseconds;
    found->peakBytes = std::max(found->peakBytes, use.peakBytes);
}

void RequestNotes::noteRefusedLoad(const NSString& address) {
    ++refusedLoadCount_;
    if (refusedAddresses_.size() < mostRefusedAddresses &&
        std::ranges::find(refusedAddresses_, address) == refusedAddresses_.end())
        refusedAddresses_.push_back(address);
}

void noteOutcome(Outcome outcome, const NSString& sentence) {
    if (currentNotes)
        currentNotes->note(outcome, sentence);
}

NSString sentenceOfReason(const NSString& reason) {
    std::u16string sentence(reason.characters());
    if (sentence.ends_with(u'.'))
        sentence.pop_back();
    // Names and abbreviations are written as they are at the beginning, too.
    const std::u16string_view word = std::u16string_view(sentence).substr(0, sentence.find(u' '));
    const auto isUpperCase = [](char16_t unit) { return asciiLowerCase(unit) != unit; };
    if (std::ranges::count_if(word, isUpperCase) == 1)
        sentence.front() = asciiLowerCase(sentence.front());
    return NSString(sentence);
}

} // namespace kelvo
