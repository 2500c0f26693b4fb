#pragma once

#include <string>

namespace kelvo {

/// A host's name as DNS knows it, in ASCII, after UTS #46 (nontransitional): "b\u00FCcher.example" is
/// "xn--bcher-kva.example". Empty when it can be no host's, or would have more than 1024 bytes.
std::string ASCIIHostName(const std::string& nameUTF8);

} // namespace kelvo
