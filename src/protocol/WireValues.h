#pragma once

#include "platform/foundation/NSData.h"
#include "platform/foundation/NSDictionary.h"
#include "platform/foundation/NSString.h"
#include "platform/foundation/NSURL.h"
#include "protocol/KelvoImExport.capnp.h"

#include <capnp/common.h>

namespace kelvo {

// Between values and their form on the wire. Encoding throws NSException (NSInvalidArgumentException) for
// what the wire cannot carry: text or data of NSConnection::fieldLimitInBytes or more, containers deeper than
// Value::maximumDepth, and objects, which have no copy. Decoding throws the same for what no encoder makes.
// Nil is the absent pointer: callers ask `has…` before they decode, and leave a field alone instead of
// encoding nil.

/// The bytes of the units; valid as long as the string.
capnp::Data::Reader wireString(const NSString& string);
capnp::Data::Reader wireData(const NSData& data);
void encodeURL(const NSURL& url, wire::Url::Builder builder);
void encodeDictionary(const NSDictionary& dictionary, wire::Dictionary::Builder builder);

NSString decodeString(capnp::Data::Reader units);
/// A copy of the bytes.
NSData decodeData(capnp::Data::Reader bytes);
/// The same where the data is going to an engine: a large copy can be handed on by its descriptor.
NSData decodeDataForEngines(capnp::Data::Reader bytes);
NSURL decodeURL(wire::Url::Reader reader);
NSDictionary decodeDictionary(wire::Dictionary::Reader reader);

} // namespace kelvo
