#pragma once

namespace kelvo {

/// As the platform counts them. What is said to be none here is not written: CCITT is for pictures of two colours, and
/// the others are no longer in use.
enum NSTIFFCompression {
    NSTIFFCompressionNone = 1,
    NSTIFFCompressionCCITTFAX3 = 3, // none
    NSTIFFCompressionCCITTFAX4 = 4, // none
    NSTIFFCompressionLZW = 5,
    NSTIFFCompressionJPEG = 6,     // none
    NSTIFFCompressionNEXT = 32766, // none
    NSTIFFCompressionPackBits = 32773,
    NSTIFFCompressionOldJPEG = 32865 // none
};

} // namespace kelvo
