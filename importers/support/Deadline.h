#pragma once

#include "importers/support/Importer.h"

#include <chrono>

namespace kelvo::importers {

/// When an import that begins now is to be done.
class Deadline {
public:
    using Clock = std::chrono::steady_clock;

    explicit Deadline(double seconds = mostSecondsOfImport)
        : end_(Clock::now() +
               std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(seconds))) {}

    bool isOver() const { return Clock::now() > end_; }

private:
    Clock::time_point end_;
};

} // namespace kelvo::importers
