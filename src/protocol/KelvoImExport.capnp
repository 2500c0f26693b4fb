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

struct AttributedString {
  # Text as pages have it: without pictures, lists and tables, which travel as RTFD.

  string @0 :Data;
  attributes @1 :List(TextAttributes);
  runs @2 :List(Run);
  # One after the other; together they are as long as the text.

  struct Run {
    length @0 :UInt32;
    # In units; never 0.
    attributes @1 :UInt32;
    # Which of the attributes.
  }
}

struct Color {
  # sRGB and opacity, each 0 to 1.
  red @0 :Float32;
  green @1 :Float32;
  blue @2 :Float32;
  alpha @3 :Float32;
}

struct TextAttributes {
  # Absent pointers: none.
  fontFamily @0 :Data;
  pointSize @1 :Float32;
  isBold @2 :Bool;
  isItalic @3 :Bool;
  isFixedPitch @4 :Bool;
  underlineStyle @5 :UInt8;
  strikethroughStyle @6 :UInt8;
  superscript @7 :Int32;
  baselineOffset @8 :Float32;
  kern @9 :Float32;
  foregroundColor @10 :Color;
  backgroundColor @11 :Color;
  link @12 :Data;
  paragraphStyle @13 :ParagraphStyle;
}

struct ParagraphStyle {
  # Lengths in points; the numbers are the platform's.
  alignment @0 :UInt8;
  baseWritingDirection @1 :Int8;
  firstLineHeadIndent @2 :Float32;
  headIndent @3 :Float32;
  tailIndent @4 :Float32;
  paragraphSpacingBefore @5 :Float32;
  paragraphSpacing @6 :Float32;
  lineHeightMultiple @7 :Float32;
  minimumLineHeight @8 :Float32;
  maximumLineHeight @9 :Float32;
  lineSpacing @10 :Float32;
  headerLevel @11 :UInt8;
  defaultTabInterval @12 :Float32;
  tabStops @13 :List(Tab);

  struct Tab {
    location @0 :Float32;
    type @1 :UInt8;
  }
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
    attributedString @19 :AttributedString;
  }
}
