#pragma once

#include <cstddef>
#include <cstdio>
#include <string>
#include <utility>
#include <vector>

namespace kelvo::tests {

inline std::string pdfStream(const std::string& contents, const std::string& dictionary = "") {
    return "<</Length " + std::to_string(contents.size()) + dictionary + ">>\nstream\n" + contents +
           "\nendstream";
}

/// Text at the top of a page in one of the fonts of pdfDocument; `text` has no parentheses.
inline std::string pdfText(const std::string& text, const std::string& font = "F 12", int y = 700) {
    return "BT /" + font + " Tf 72 " + std::to_string(y) + " Td (" + text + ") Tj ET\n";
}

struct PDFParts {
    /// Each page's content stream.
    std::vector<std::string> pages;
    /// Entries of the document's information.
    std::string information;
    /// Of each page, in place of that of a letter.
    std::string mediaBox = "[0 0 612 792]";
    /// Further entries of the pages.
    std::string pageEntries;
    std::string trailerEntries;
};

/// Of a document that nobody has the key of.
inline std::string pdfEncryption() {
    const std::string noKey(32, 'k');
    return "/ID[(0123456789abcdef)(0123456789abcdef)]/Encrypt<</Filter/Standard/V 1/R 2/P -4/O(" + noKey +
           ")/U(" + noKey + ")>>";
}

/// A document with the fonts F (Helvetica), T (ABCDEF+TimesNewRomanPS-BoldItalicMT), M (Courier) and H (Arial, in which
/// A to Z are Hebrew letters). Where a page's contents say "/Deadly cs", whoever reads it calls itself until there is no
/// stack.
inline std::string pdfDocument(const PDFParts& parts) {
    bool isDeadly = false;
    for (const std::string& contents : parts.pages)
        isDeadly = isDeadly || contents.find("/Deadly cs") != std::string::npos;
    std::vector<std::string> objects = {
        "<</Type/Catalog/Pages 2 0 R>>",
        "",
        "<</Type/Font/Subtype/Type1/BaseFont/Helvetica/Encoding/WinAnsiEncoding>>",
        "<</Type/Font/Subtype/Type1/BaseFont/ABCDEF+TimesNewRomanPS-BoldItalicMT>>",
        "<</Type/Font/Subtype/Type1/BaseFont/Courier>>",
        pdfStream(std::string(isDeadly ? 1'000'000 : 0, '{'),
                  "/FunctionType 4/Domain[0 1]/Range[0 1 0 1 0 1]"),
        "<<" + parts.information + ">>",
        "<</Type/Font/Subtype/Type1/BaseFont/Arial/ToUnicode 9 0 R>>",
        pdfStream("begincmap 1 begincodespacerange <00> <FF> endcodespacerange "
                  "1 beginbfrange <41> <5A> <05D0> endbfrange endcmap"),
    };
    std::string kids;
    for (const std::string& contents : parts.pages) {
        objects.push_back(pdfStream(contents));
        objects.push_back("<</Type/Page/Parent 2 0 R/MediaBox" + parts.mediaBox + parts.pageEntries +
                          "/Contents " + std::to_string(objects.size()) +
                          " 0 R/Resources<</Font<</F 3 0 R/T 4 0 R/M 5 0 R/H 8 0 R>>"
                          "/ColorSpace<</Deadly[/Separation/Ink/DeviceRGB 6 0 R]>>>>>>");
        kids += std::to_string(objects.size()) + " 0 R ";
    }
    objects[1] = "<</Type/Pages/Count " + std::to_string(parts.pages.size()) + "/Kids[" + kids + "]>>";

    std::string file = "%PDF-1.7\n";
    std::string table;
    for (std::size_t index = 0; index < objects.size(); ++index) {
        char entry[32];
        std::snprintf(entry, sizeof entry, "%010zu 00000 n \n", file.size());
        table += entry;
        file += std::to_string(index + 1) + " 0 obj\n" + objects[index] + "\nendobj\n";
    }
    const std::string size = std::to_string(objects.size() + 1);
    const std::string place = std::to_string(file.size());
    return file + "xref\n0 " + size + "\n0000000000 65535 f \n" + table + "trailer <</Size " + size +
           "/Root 1 0 R/Info 7 0 R" + parts.trailerEntries + ">>\nstartxref\n" + place + "\n%%EOF\n";
}

inline std::string pdfDocument(std::vector<std::string> pages) {
    PDFParts parts;
    parts.pages = std::move(pages);
    return pdfDocument(parts);
}

/// Five pages, "one" to "five", of which nobody reads the third.
inline std::string pdfDocumentWithDeadlyPage() {
    return pdfDocument(
        {pdfText("one"), pdfText("two"), "/Deadly cs " + pdfText("three"), pdfText("four"), pdfText("five")});
}

} // namespace kelvo::tests
