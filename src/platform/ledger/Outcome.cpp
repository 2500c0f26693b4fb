#include "platform/ledger/Outcome.h"

namespace kelvo {

NSString wordOfOutcome(Outcome outcome) {
    switch (outcome) {
    case Outcome::answered:
        return u"answered";
    case Outcome::nothing:
        return u"nothing";
    case Outcome::unsupported:
        return u"unsupported";
    case Outcome::broken:
        return u"broken";
    case Outcome::locked:
        return u"locked";
    case Outcome::refused:
        return u"refused";
    case Outcome::missingEngine:
        return u"missing engine";
    case Outcome::timedOut:
        return u"timed out";
    case Outcome::outOfMemory:
        return u"out of memory";
    case Outcome::crashed:
        return u"crashed";
    }
    return u"";
}

} // namespace kelvo
