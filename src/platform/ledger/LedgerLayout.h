#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <type_traits>

namespace kelvo::ledger {

// The file, as it lies in memory. One process writes to it, through a mapping; any number read it with read(2), so that
// a file that somebody cuts short is an error and no signal.
//
// Each record and each slot begins with its version: odd while it is being written, and another after each change.

inline constexpr std::string_view magic = "KELVOLDG";
/// To be raised whenever anything below changes.
inline constexpr std::uint32_t layoutVersion = 1;
inline constexpr std::size_t recordCount = 512;
inline constexpr std::size_t engineCount = 8;

enum class RecordState : std::uint32_t { empty, begun, completed };

struct Header {
    char magic[8];
    std::uint32_t layoutVersion;
    std::uint32_t recordSize;
    std::uint32_t recordCount;
    std::uint32_t engineCount;
    /// Of the request that began last. Records lie at their number modulo recordCount.
    std::uint64_t lastSequence;
    char unused[2048 - 32];
};

struct EngineSlot {
    std::uint32_t version;
    /// 0: the slot is free.
    std::int32_t process;
    std::uint8_t nameLength;
    std::uint8_t layersLength;
    char name[54];
    char layers[192];
};

struct Record {
    std::uint32_t version;
    RecordState state;

    // Written when the request begins.
    std::uint64_t sequence;
    std::uint64_t token;
    std::int64_t begunNanoseconds; ///< from 1970
    std::uint64_t byteCount;
    std::uint64_t byteHash;
    std::uint8_t operation;
    std::uint8_t hasBytes;
    std::uint16_t pathLength;

    // Written when it is completed.
    std::uint8_t outcome;
    std::uint8_t engineLength;
    std::uint16_t sentenceLength;
    std::uint16_t refusedLength;
    std::uint16_t unused;
    double milliseconds;
    double cpuMilliseconds;
    double engineCPUMilliseconds;
    std::uint64_t peakBytes;
    std::uint64_t enginePeakBytes;
    std::uint64_t refusedLoadCount;

    // Text is UTF-8, the path the bytes of the file system.
    char path[704];
    char engine[64];
    char sentence[384];
    /// Addresses one after the other, each behind its length in one byte.
    char refused[784];
};

struct File {
    Header header;
    EngineSlot engines[engineCount];
    Record records[recordCount];
};

static_assert(sizeof(Header) == 2048 && sizeof(EngineSlot) == 256 && sizeof(Record) == 2048);
static_assert(offsetof(File, records) == 4096 && std::is_trivially_copyable_v<File>);

} // namespace kelvo::ledger
