#pragma once

#include "platform/appkit/NSAttributedString.h"
#include "platform/coregraphics/CGImage.h"
#include "platform/foundation/NSData.h"
#include "platform/foundation/NSDictionary.h"
#include "platform/foundation/NSGeometry.h"
#include "platform/foundation/NSString.h"

#include <cstddef>
#include <memory>
#include <utility>

namespace kelvo {

// What a PDF says of itself, with the types of the values. Empty ones are left out.
inline constexpr const char16_t* PDFDocumentTitleAttribute = u"Title";               // string
inline constexpr const char16_t* PDFDocumentAuthorAttribute = u"Author";             // string
inline constexpr const char16_t* PDFDocumentSubjectAttribute = u"Subject";           // string
inline constexpr const char16_t* PDFDocumentCreatorAttribute = u"Creator";           // string
inline constexpr const char16_t* PDFDocumentProducerAttribute = u"Producer";         // string
inline constexpr const char16_t* PDFDocumentCreationDateAttribute = u"CreationDate"; // date
inline constexpr const char16_t* PDFDocumentModificationDateAttribute = u"ModDate";  // date
inline constexpr const char16_t* PDFDocumentKeywordsAttribute = u"Keywords";         // array of strings

enum PDFDisplayBox : unsigned char { kPDFDisplayBoxMediaBox = 0, kPDFDisplayBoxCropBox = 1 };

/// What a page is drawn on.
enum class PDFPageGround : unsigned char { white, transparent };

struct OpenPDF;

// A document is a handle on its bytes and what the engine said of them when it opened them; its pages and the selection
// keep it. plumwick-pdf-engine holds the document that was asked about last; where it has another one by now, or had to
// be started again, it is given this one once more. What is asked of pages runs the current run loop.

/// A page; also one that the document counts and does not have.
class PDFPage {
public:
    /// How long string() may take.
    static constexpr double secondsForString = 10;
    /// How long imageOfSize() may take, so that who waits 15 s for what is made of it still gets it.
    static constexpr double secondsForImage = 11;

    /// The plain text in reading order, with "\n" between lines and none at the end; nil when there is none. What a page
    /// has beyond 16 Mi units is left out. Throws NSException (EngineExceptions.h) when there was no answer within the
    /// time; the engine was ended then, and other pages can still be read.
    NSString string() const { return stringUsingTimeout(secondsForString); }
    NSString stringUsingTimeout(double seconds) const;
    /// In points; all 0 for a page that is missing. Of a locked document only the first page's media box is known.
    /// Throws as string() does.
    NSRect boundsForBox(PDFDisplayBox box) const;
    /// Of the page as it is read, which is its crop box, turned: in points; 0 x 0 for a page that is missing and of a
    /// locked document. Throws as string() does.
    NSSize sizeAsRead() const;

    /// The page as it is read, with its annotations and the fields of its forms, in exactly so many pixels; their two
    /// scales may differ. On white all alpha is 255. Nil when the page is missing, the document is locked, a side is 0, and
    /// when there would be more than 100 million pixels, or no size that the page could be drawn in, which is noted. Throws
    /// as string() does.
    CGImage imageOfSize(std::size_t width, std::size_t height, PDFPageGround ground) const {
        return imageOfSizeUsingTimeout(width, height, ground, secondsForImage);
    }
    CGImage imageOfSizeUsingTimeout(std::size_t width, std::size_t height, PDFPageGround ground,
                                    double seconds) const;

private:
    friend class PDFDocument;
    PDFPage(std::shared_ptr<const OpenPDF> document, std::size_t index)
        : document_(std::move(document)), index_(index) {}

    std::shared_ptr<const OpenPDF> document_;
    std::size_t index_;
};

/// All the text of a document.
class PDFSelection {
public:
    /// How long attributedString() may take, so that who waits 15 s for what is made of it still gets it.
    static constexpr double secondsForAttributedString = 11;

    /// The text of the pages as PDFPage::string() has it, with U+000C between those that have text. Of each character it
    /// says the font's family and size, whether that is bold, italic or of fixed pitch by its name, the colour, and
    /// underlines where the library tells them, which version 22.12 does not. Paragraphs, links and pictures are not in
    /// it. Nil when there is no text, and for a locked document.
    ///
    /// Pages on which the engine fails are left out, and so are those that are not read when the time is over; which is
    /// noted with the current request.
    NSAttributedString attributedString() const {
        return attributedStringUsingTimeout(secondsForAttributedString);
    }
    NSAttributedString attributedStringUsingTimeout(double seconds) const;

private:
    friend class PDFDocument;
    explicit PDFSelection(std::shared_ptr<const OpenPDF> document) : document_(std::move(document)) {}

    std::shared_ptr<const OpenPDF> document_;
};

/// A PDF. Default-constructed it is nil; that has no pages and says nothing.
class PDFDocument {
public:
    PDFDocument() noexcept = default;

    /// Nil when the data are nil or no PDF, and when the engine failed on them, which is noted with the current
    /// request. Runs the current run loop.
    static PDFDocument initWithData(const NSData& data);

    bool isNil() const noexcept { return !open_; }
    /// Nil when the document says nothing of itself, and when it is locked.
    NSDictionary documentAttributes() const;
    /// Whether its text is encrypted and the empty password is not its key.
    bool isLocked() const noexcept;
    /// Of a locked document 0, where only its key tells.
    std::size_t pageCount() const noexcept;
    /// Throws NSException (NSRangeException) at or past the page count.
    PDFPage pageAtIndex(std::size_t index) const;
    PDFSelection selectionForEntireDocument() const { return PDFSelection(open_); }

private:
    std::shared_ptr<const OpenPDF> open_;
};

} // namespace kelvo
