#include "service/PDFText.h"

#include "pdf/PDFDocumentConversion.h"
#include "platform/foundation/NSException.h"
#include "platform/ledger/RequestNotes.h"
#include "platform/pdfkit/PDFDocument.h"
#include "protocol/ResultKeys.h"
#include "text/StringNormalization.h"
#include "text/SubstringSearch.h"

namespace kelvo {
namespace {

NSString plainText(const PDFDocument& document, const NSDictionary& attributes, const NSString& file,
                   const TextContentOfFileAtPath& textContentOfFileAtPath) {
    if (!file.isNil() && !isProducedByGhostscript(attributes)) {
        const NSString text = textContentOfFileAtPath(file);
        if (!text.isNil())
            return fixedAndNormalizedString(text);
    }
    return fixedAndNormalizedStringUsingTimeout(document, secondsForPages);
}

void addSize(NSMutableDictionary& result, const PDFDocument& document) {
    NSSize size;
    try {
        size = document.pageAtIndex(0).boundsForBox(kPDFDisplayBoxMediaBox).size;
    } catch (const NSException&) {
        noteOutcome(Outcome::answered, u"the size of its pages is missing");
    }
    if (size == NSSize())
        return;
    const NSString string = NSStringFromSize(size);
    result.setObject_forKey(string, ResultSizeKey);
    result.setObject_forKey(string, ResultPixelSizeKey);
    result.setObject_forKey(NSNumber::numberWithBool(false), ResultAlphaKey);
}

} // namespace

bool isProducedByGhostscript(const NSDictionary& documentAttributes) {
    const NSString producer = documentAttributes.objectForKey(PDFDocumentProducerAttribute).string();
    return containsSubstring_caseSensitive(producer, u"Ghostscript", false);
}

NSDictionary _attributed_stringWithPDF_file_size(bool attributed, const NSData& pdf, const NSString& file,
                                                 bool wantsSize,
                                                 const TextContentOfFileAtPath& textContentOfFileAtPath) {
    const PDFDocument document = PDFDocument::initWithData(pdf);
    if (document.isNil())
        return nullptr;
    const NSDictionary attributes = document.documentAttributes();
    NSMutableDictionary result = NSMutableDictionary::dictionary();
    if (document.isLocked()) {
        noteOutcome(Outcome::answered, sentenceOfLockedPDF);
        result.setObject_forKey(NSNumber::numberWithBool(true), ResultLockedKey);
    } else {
        const Value text = attributed ? Value(document.selectionForEntireDocument().attributedString())
                                      : Value(plainText(document, attributes, file, textContentOfFileAtPath));
        if (text.isNil())
            noteOutcome(Outcome::nothing, u"there is no text in the document");
        // Nil throws.
        result.setObject_forKey(text, ResultStringKey);
    }
    result.setObject_forKey(NSNumber::numberWithInt(static_cast<std::int32_t>(document.pageCount())),
                            ResultPageCountKey);
    for (const auto& [key, object] : attributes)
        result.setObject_forKey(object, key);
    if (wantsSize && document.pageCount() > 0)
        addSize(result, document);
    return result;
}

} // namespace kelvo
