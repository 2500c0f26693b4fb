@0xb3a1c5d2f4e6870b;
# What travels between the service and its clients.
#
# Text is sent as its UTF-16 units, low byte first, because it may hold U+0000 and unpaired surrogates. Wherever the
# interface can say nil, nil is the absent pointer; empty text, data and dictionaries are present and empty.

using Cxx = import "/capnp/c++.capnp";
$Cxx.namespace("kelvo::wire");

annotation selector @0x82e1d822a292143a (method) :Text;
# The operation's name as logs and errors print it.

interface KelvoImExport {
  # The root object. The operations stand in the order of their declaration. The token is the client's name for the
  # request, by which it finds the record of it in the service's ledger: random, never 0, and another each time.

  metaDataForFile @0 (file :Data, token :UInt64) -> (result :Dictionary)
      $selector("metaDataForFile:");
  rtfdWithHTMLBaseURLAllowRemoteRequest @1
      (html :Data, baseURL :Url, allowRemoteRequest :Bool, token :UInt64) -> (result :Data)
      $selector("RTFDWithHTML:baseURL:allowRemoteRequest:");
  writeRTFDDataToFile @2 (data :Data, file :Data, token :UInt64) -> (result :Bool)
      $selector("writeRTFDData:toFile:");
  searchableTextOfWebArchive @3 (file :Data, token :UInt64) -> (result :Dictionary)
      $selector("searchableTextOfWebArchive:");
  attributedStringWithContentsOfFile @4 (file :Data, token :UInt64) -> (result :Dictionary)
      $selector("attributedStringWithContentsOfFile:");
  posterImageForMovieWithFile @5 (file :Data, token :UInt64) -> (result :Dictionary)
      $selector("posterImageForMovieWithFile:");
  attributedStringWithPDF @6 (attributed :Bool, pdf :Data, token :UInt64) -> (result :Dictionary)
      $selector("attributed:stringWithPDF:");
  imageWithContentsOfFileStringFromPDFCanUseSpotlight @7
      (file :Data, stringFromPDF :Bool, canUseSpotlight :Bool, token :UInt64) -> (result :Dictionary)
      $selector("imageWithContentsOfFile:stringFromPDF:canUseSpotlight:");
  pdfImageRepOfFile @8 (file :Data, token :UInt64) -> (result :Data)
      $selector("PDFImageRepOfFile:");
}

struct Dictionary {
  entries @0 :List(Entry);
  # In the dictionary's order. A key that comes twice takes the last value.

  struct Entry {
    key @0 :Value;
    value @1 :Value;
  }
}

struct Url {
  string @0 :Data;
  # As it was given, not resolved.
  base @1 :Url;
}

struct Value {
  # One node of a property-list tree.

  union {
    nil @0 :Void;
    null @1 :Void;
    boolean @2 :Bool;
    int32 @3 :Int32;
    int64 @4 :Int64;
    float32 @5 :Float32;
    float64 @6 :Float64;
    string @7 :Data;
    data @8 :Data;
    date @9 :Float64;
    # Seconds from 2001-01-01 00:00:00 UTC.
    url @10 :Url;
    array @11 :List(Value);
    dictionary @12 :Dictionary;
    size :group {
      width @13 :Float32;
      height @14 :Float32;
    }
    color :group {
      # sRGB and opacity, each 0 to 1.
      red @15 :Float32;
      green @16 :Float32;
      blue @17 :Float32;
      alpha @18 :Float32;
    }
  }
}
