#include "importers/fonts/FontImport.h"

#include "importers/fonts/FontFace.h"
#include "importers/support/Texts.h"

#include <algorithm>

namespace kelvo::importers {
namespace {

constexpr int mostFaces = 1000;

using Texts = std::vector<std::string>;

/// Each text once, in their order.
Texts textsOf(const std::vector<FontFace>& faces, std::string FontFace::*member) {
    Texts texts;
    for (const FontFace& face : faces) {
        if (const std::string& text = face.*member;
            !text.empty() && std::ranges::find(texts, text) == texts.end())
            texts.push_back(text);
    }
    return texts;
}

void setFaces(Attributes& attributes, const std::vector<FontFace>& faces) {
    const auto setFirst = [&](const char* name, std::string FontFace::*member) {
        if (const Texts texts = textsOf(faces, member); !texts.empty())
            attributes.set(name, stringOf(texts.front()));
    };
    const auto setAll = [&](const char* name, std::string FontFace::*member) {
        attributes.set(name, arrayOf(textsOf(faces, member)));
    };
    setFirst("kMDItemTitle", &FontFace::fullName);
    setFirst("kMDItemVersion", &FontFace::version);
    setFirst("kMDItemCopyright", &FontFace::copyright);
    setFirst("kMDItemRights", &FontFace::license);
    setFirst("kMDItemDescription", &FontFace::description);
    setFirst("kMDItemURL", &FontFace::URL);
    setFirst("plumwick_trademark", &FontFace::trademark);
    setAll("kMDItemAuthors", &FontFace::designer);
    setAll("kMDItemPublishers", &FontFace::manufacturer);
    setAll("kMDItemFonts", &FontFace::fullName);
    setAll("plumwick_fontFamilies", &FontFace::family);
    setAll("plumwick_fontStyles", &FontFace::style);
    setAll("plumwick_postScriptNames", &FontFace::postScriptName);
    const FontFace& face = faces.front();
    attributes.setInteger("plumwick_glyphs", face.glyphs);
    if (face.weight)
        attributes.setInteger("plumwick_fontWeight", *face.weight);
    attributes.set("plumwick_fontAxes", arrayOf(face.axes));
    attributes.set("plumwick_scripts", arrayOf(face.scripts));
}

} // namespace

void importFont(Attributes& attributes) {
    const Deadline deadline;
    const FontFile file(attributes.file());
    const int count = std::min(file.faceCount(), mostFaces);
    std::vector<FontFace> faces;
    for (int index = 0; index < count && !deadline.isOver(); ++index) {
        if (auto face = file.face(index, deadline))
            faces.push_back(std::move(*face));
    }
    if (faces.empty()) {
        attributes.note(MDNoteBroken, "the file is damaged, or no font");
        return;
    }
    setFaces(attributes, faces);
    if (faces.size() < static_cast<std::size_t>(file.faceCount()))
        attributes.note(MDNoteIncomplete, "not all fonts of the file are read");
}

} // namespace kelvo::importers
