#pragma once

#include "platform/foundation/encodings/TextEncodingConverter.h"

#include <cstddef>
#include <cstdint>

namespace kelvo {

/// Makes the two converters behind convertUTF8ToUnicode and convertUnicodeToUTF8, once for the process. Both
/// fail with paramErr until this was called.
void initUnicodeConverters();

/// Lengths and capacities are in bytes for UTF-8, in 16-bit units for Unicode. Each call begins a new text
/// and returns the status of the platform, 0 for success; how much was read and written is not told. What
/// does not fit is cut off at a whole character, with kTECOutputBufferFullStatus. Both share one converter a
/// direction: for use by one thread at a time.
OSStatus convertUTF8ToUnicode(const std::uint8_t* source, std::size_t sourceLengthInBytes,
                              char16_t* destination, std::size_t destinationCapacityInUnits);
OSStatus convertUnicodeToUTF8(const char16_t* source, std::size_t sourceLengthInUnits,
                              std::uint8_t* destination, std::size_t destinationCapacityInBytes);

/// Converts text of any available encoding with a converter of its own, as much as fits. `*unitsWritten` is
/// always set, to 0 when nothing was converted.
///
/// The result has a mixed meaning: the status, never 0, when there is no converter for the encoding;
/// otherwise 1 when the whole text was converted and 0 when it was not, be it for want of room. So 0 may well
/// come with units written, and a negative number comes with none.
std::int32_t convertEncodingToUnicode(const std::uint8_t* source, std::size_t sourceLengthInBytes,
                                      TextEncoding encoding, char16_t* destination,
                                      std::size_t destinationCapacityInUnits, std::size_t* unitsWritten);

} // namespace kelvo
