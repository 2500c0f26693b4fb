#include "platform/appkit/documents/DocumentReading.h"

#include "platform/appkit/NSDocumentAttributes.h"
#include "platform/appkit/NSFileWrapper.h"
#include "platform/appkit/documents/DocumentEngine.h"
#include "platform/appkit/documents/PageReading.h"
#include "platform/appkit/rtfreader/RTFReading.h"
#include "platform/filekinds/FileKind.h"
#include "platform/foundation/NSFileManager.h"
#include "platform/foundation/encodings/PlainTextReading.h"
#include "platform/ledger/RequestNotes.h"
#include "platform/webkit/WebArchive.h"

#include <algorithm>
#include <array>

namespace kelvo::NSAttributedStringKitAdditions {
namespace {

/// Who asks waits 15 s, in which what was read has to be written and sent as well, which takes 2 s for 50 MB. The few
/// documents that the office suite alone needs longer for have no answer: a later one would reach nobody, and the other
/// clients would wait for it.
constexpr double secondsForConversion = 12;

struct Reading {
    NSAttributedString text;
    NSDictionary attributes;
};

/// What the office suite turns into RTF.
struct Conversion {
    FileKind kind;
    const char16_t* extension;
    const char16_t* documentType;
    const char16_t* UTI;
};

constexpr std::array conversions{
    Conversion{FileKind::wordDocument, u"doc", NSDocFormatTextDocumentType, u"com.microsoft.word.doc"},
    Conversion{FileKind::wordML, u"xml", NSWordMLTextDocumentType, u"com.microsoft.word.wordml"},
    Conversion{FileKind::officeOpenXML, u"docx", NSOfficeOpenXMLTextDocumentType,
               u"org.openxmlformats.wordprocessingml.document"},
    Conversion{FileKind::openDocument, u"odt", NSOpenDocumentTextDocumentType,
               u"org.oasis-open.opendocument.text"},
    Conversion{FileKind::flatOpenDocument, u"fodt", NSOpenDocumentTextDocumentType,
               u"org.oasis-open.opendocument.text"},
    Conversion{FileKind::openOfficeText, u"sxw", NSOpenDocumentTextDocumentType, u"org.openoffice.text"},
};

/// What nothing is read from, and why.
struct Refusal {
    FileKind kind;
    Outcome outcome;
    const char16_t* sentence;
};

constexpr std::array refusals{
    Refusal{FileKind::encryptedPackage, Outcome::locked, u"the document is encrypted"},
    Refusal{FileKind::damagedPackage, Outcome::broken,
            u"the file is damaged or cut off: the list of what is in it is missing"},
    Refusal{FileKind::folder, Outcome::unsupported, u"a folder is no document, unless it is an RTFD package"},
    Refusal{FileKind::spreadsheet, Outcome::unsupported, u"a spreadsheet is no text document"},
    Refusal{FileKind::presentation, Outcome::unsupported, u"a presentation is no text document"},
    Refusal{FileKind::book, Outcome::unsupported, u"a book in EPUB is no text document"},
    Refusal{FileKind::archive, Outcome::unsupported, u"an archive or a compressed file is no text document"},
    Refusal{FileKind::PDF, Outcome::unsupported, u"a PDF is no text document"},
    Refusal{FileKind::postScript, Outcome::unsupported, u"PostScript with binary data is no text document"},
    Refusal{FileKind::SVG, Outcome::unsupported, u"an image is no text document"},
    Refusal{FileKind::image, Outcome::unsupported, u"an image is no text document"},
    Refusal{FileKind::movie, Outcome::unsupported, u"a movie is no text document"},
    Refusal{FileKind::audio, Outcome::unsupported, u"a sound is no text document"},
    Refusal{FileKind::other, Outcome::unsupported,
            u"it is binary data of an unknown kind, and no text document"},
};

Reading refuse(FileKind kind) {
    const auto* const row = std::ranges::find(refusals, kind, &Refusal::kind);
    if (row != refusals.end())
        noteOutcome(row->outcome, row->sentence);
    return {};
}

NSMutableDictionary attributesWithType(const NSDictionary& others, const char16_t* documentType,
                                       const char16_t* UTI) {
    NSMutableDictionary attributes =
        NSMutableDictionary(others.isNil() ? NSDictionary::dictionary() : others);
    attributes.setObject_forKey(documentType, NSDocumentTypeDocumentAttribute);
    attributes.setObject_forKey(UTI, NSUTIDocumentAttribute);
    return attributes;
}

Reading readPlainText(const NSData& data) {
    NSStringEncoding encoding = 0;
    const NSString text = stringWithPlainText(data, &encoding);
    NSMutableDictionary attributes =
        attributesWithType(nullptr, NSPlainTextDocumentType, u"public.plain-text");
    attributes.setObject_forKey(NSNumber::numberWithUnsignedInt(encoding),
                                NSCharacterEncodingDocumentAttribute);
    return {NSAttributedString(text), attributes.copy()};
}

Reading readRTF(const NSData& data) {
    Reading reading;
    reading.text = initWithRTF_documentAttributes(data, &reading.attributes);
    return reading;
}

Reading readRTFD(const NSData& data) {
    Reading reading;
    reading.text = initWithRTFD_documentAttributes(data, &reading.attributes);
    return reading;
}

Reading readPage(const NSData& data, const NSString& path) {
    Reading reading;
    reading.text = attributedStringWithPage(data, NSURL::fileURLWithPath(path), &reading.attributes);
    return reading;
}

Reading readSavedPage(const NSData& data, FileKind kind) {
    const WebArchive archive = WebArchive::initWithData(data);
    if (archive.isNil()) {
        if (data.characters().starts_with("bplist"))
            return {};
        const RequestNotes* const notes = RequestNotes::current();
        if (notes && !notes->sentence().isNil())
            noteOutcome(Outcome::answered,
                        notes->sentence().stringByAppendingString(u"; its source was read as plain text"));
        return readPlainText(data);
    }
    Reading reading;
    reading.text = attributedStringWithSavedPage(archive, &reading.attributes);
    reading.attributes = attributesWithType(reading.attributes, NSWebArchiveTextDocumentType,
                                            kind == FileKind::MIMEHTML ? u"com.microsoft.word.mhtml"
                                                                       : u"com.apple.webarchive");
    return reading;
}

Reading readConverted(const NSData& data, const Conversion& conversion) {
    const NSData rtf =
        DocumentEngine::sharedEngine().RTFOfDocument(data, conversion.extension, secondsForConversion);
    if (rtf.isNil())
        return {};
    Reading reading = readRTF(rtf);
    NSMutableDictionary attributes =
        attributesWithType(reading.attributes, conversion.documentType, conversion.UTI);
    attributes.setObject_forKey(NSNumber::numberWithInt(1), NSConvertedDocumentAttribute);
    // Which words of RTF the document was written with says nothing about it any more.
    attributes.removeObjectForKey(NSCocoaVersionDocumentAttribute);
    reading.attributes = attributes.copy();
    return reading;
}

/// A folder is a document only when it holds what makes it a package; the rest of it is not even looked at
/// otherwise.
Reading readPackage(const NSString& path) {
    Reading reading;
    if (kindOfFile(path) != FileKind::RTFD)
        return refuse(FileKind::folder);
    if (const auto wrapper = NSFileWrapper::initWithPath(path))
        reading.text = initWithRTFDFileWrapper_documentAttributes(*wrapper, &reading.attributes);
    return reading;
}

Reading readFile(const NSString& path) {
    const NSData data = NSData::dataWithContentsOfFileWhenNeeded(path);
    if (data.isNil()) {
        noteOutcome(Outcome::unsupported, u"it is neither a file nor a folder");
        return {};
    }
    const FileContents contents(data);
    const FileKind kind = kindOfContents(contents, path);
    switch (kind) {
    case FileKind::plainText:
        return readPlainText(data);
    case FileKind::postScript:
    case FileKind::SVG:
        return isText(contents) ? readPlainText(data) : refuse(kind);
    case FileKind::RTF:
        return readRTF(data);
    case FileKind::RTFD:
        return readRTFD(data);
    case FileKind::HTML:
        return readPage(data, path);
    case FileKind::webArchive:
    case FileKind::MIMEHTML:
        return readSavedPage(data, kind);
    default:
        const auto* const conversion = std::ranges::find(conversions, kind, &Conversion::kind);
        return conversion == conversions.end() ? refuse(kind) : readConverted(data, *conversion);
    }
}

} // namespace

NSAttributedString initWithPath_documentAttributes(const NSString& path, NSDictionary* documentAttributes) {
    bool isDirectory = false;
    Reading reading;
    if (NSFileManager::defaultManager().fileExistsAtPath_isDirectory(path, &isDirectory))
        reading = isDirectory ? readPackage(path) : readFile(path);
    if (documentAttributes)
        *documentAttributes = reading.text.isNil() ? NSDictionary() : reading.attributes;
    return reading.text;
}

} // namespace kelvo::NSAttributedStringKitAdditions
