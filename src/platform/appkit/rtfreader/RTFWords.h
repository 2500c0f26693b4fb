#pragma once

#include <cstdint>
#include <string_view>

// Every control word that means something here, by who understands it. One list makes the enumeration and the
// look-up.
// clang-format off
#define KELVO_RTF_WORDS(WORD)                                                                                \
    /* Formats of characters. */                                                                             \
    WORD(character, ab) WORD(character, af) WORD(character, afs) WORD(character, ai) WORD(character, b)      \
    WORD(character, cb) WORD(character, cf) WORD(character, chcbpat) WORD(character, cs)                     \
    WORD(character, dbch) WORD(character, deleted) WORD(character, dn) WORD(character, expnd)                \
    WORD(character, expndtw) WORD(character, f) WORD(character, fs) WORD(character, fsmilli)                 \
    WORD(character, hich) WORD(character, highlight) WORD(character, i) WORD(character, loch)                \
    WORD(character, ltrch) WORD(character, nosupersub) WORD(character, plain) WORD(character, rtlch)         \
    WORD(character, strike) WORD(character, striked) WORD(character, sub) WORD(character, super)             \
    WORD(character, ul) WORD(character, uld) WORD(character, uldash) WORD(character, uldashd)                \
    WORD(character, uldashdd) WORD(character, uldb) WORD(character, ulhwave) WORD(character, ulldash)        \
    WORD(character, ulnone) WORD(character, ulth) WORD(character, ulthd) WORD(character, ulthdash)           \
    WORD(character, ulthdashd) WORD(character, ulthdashdd) WORD(character, ulthldash)                        \
    WORD(character, ululdbwave) WORD(character, ulw) WORD(character, ulwave) WORD(character, up)             \
    WORD(character, v)                                                                                       \
    /* Formats of paragraphs. */                                                                             \
    WORD(paragraph, contextualspace) WORD(paragraph, fi) WORD(paragraph, ilvl) WORD(paragraph, intbl)        \
    WORD(paragraph, itap)                                                                                    \
    WORD(paragraph, li) WORD(paragraph, ls) WORD(paragraph, ltrpar) WORD(paragraph, outlinelevel)            \
    WORD(paragraph, pard) WORD(paragraph, pardeftab) WORD(paragraph, pardirnatural) WORD(paragraph, qc)      \
    WORD(paragraph, qj) WORD(paragraph, ql) WORD(paragraph, qnatural) WORD(paragraph, qr)                    \
    WORD(paragraph, ri) WORD(paragraph, rtlpar) WORD(paragraph, s) WORD(paragraph, sa) WORD(paragraph, sb)   \
    WORD(paragraph, sl) WORD(paragraph, slleading) WORD(paragraph, slmaximum) WORD(paragraph, slminimum)     \
    WORD(paragraph, slmult) WORD(paragraph, tqc) WORD(paragraph, tqdec) WORD(paragraph, tqr)                 \
    WORD(paragraph, tx)                                                                                      \
    /* Definitions of rows and cells, and borders. */                                                        \
    WORD(row, box) WORD(row, brdrb) WORD(row, brdrbar) WORD(row, brdrbtw) WORD(row, brdrcf)                  \
    WORD(row, brdrdash) WORD(row, brdrdashd) WORD(row, brdrdashdd) WORD(row, brdrdashsm) WORD(row, brdrdb)   \
    WORD(row, brdrdot) WORD(row, brdremboss) WORD(row, brdrengrave) WORD(row, brdrhair)                      \
    WORD(row, brdrinset) WORD(row, brdrl) WORD(row, brdrnil) WORD(row, brdrnone) WORD(row, brdroutset)       \
    WORD(row, brdrr) WORD(row, brdrs) WORD(row, brdrsh) WORD(row, brdrt) WORD(row, brdrtbl)                  \
    WORD(row, brdrth) WORD(row, brdrtriple) WORD(row, brdrw) WORD(row, brdrwavy) WORD(row, brdrwavydb)       \
    WORD(row, cellx) WORD(row, chbrdr) WORD(row, clbrdrb) WORD(row, clbrdrl) WORD(row, clbrdrr)              \
    WORD(row, clbrdrt) WORD(row, clcbpat) WORD(row, cldgll) WORD(row, cldglu) WORD(row, clftsWidth)          \
    WORD(row, clmgf) WORD(row, clmrg) WORD(row, clpadb) WORD(row, clpadfl) WORD(row, clpadft)                \
    WORD(row, clpadl) WORD(row, clpadr) WORD(row, clpadt) WORD(row, clvertalb) WORD(row, clvertalc)          \
    WORD(row, clvertalt) WORD(row, clvmgf) WORD(row, clvmrg) WORD(row, clwWidth) WORD(row, irow)             \
    WORD(row, lastrow) WORD(row, trbrdrb) WORD(row, trbrdrh) WORD(row, trbrdrl) WORD(row, trbrdrr)           \
    WORD(row, trbrdrt) WORD(row, trbrdrv) WORD(row, trcbpat) WORD(row, trftsWidth) WORD(row, trgaph)         \
    WORD(row, trleft) WORD(row, trowd) WORD(row, trpaddb) WORD(row, trpaddl) WORD(row, trpaddr)              \
    WORD(row, trpaddt) WORD(row, trwWidth)                                                                   \
    /* Characters and ends. */                                                                               \
    WORD(text, bullet) WORD(text, cell) WORD(text, chftn) WORD(text, column) WORD(text, emdash)              \
    WORD(text, emspace) WORD(text, endash) WORD(text, enspace) WORD(text, lbr) WORD(text, ldblquote)         \
    WORD(text, line) WORD(text, lquote) WORD(text, ltrmark) WORD(text, nestcell) WORD(text, nestrow)         \
    WORD(text, page) WORD(text, par) WORD(text, qmspace) WORD(text, rdblquote) WORD(text, row)               \
    WORD(text, rquote) WORD(text, rtlmark) WORD(text, sect) WORD(text, softline) WORD(text, softpage)        \
    WORD(text, tab) WORD(text, u) WORD(text, uc) WORD(text, zwbo) WORD(text, zwj) WORD(text, zwnbo)          \
    WORD(text, zwnj)                                                                                         \
    /* Groups that are read. */                                                                              \
    WORD(group, author) WORD(group, category) WORD(group, colortbl) WORD(group, comment)                     \
    WORD(group, company) WORD(group, copyright) WORD(group, creatim) WORD(group, do_) WORD(group, doccomm)   \
    WORD(group, dptxbxtext) WORD(group, editor) WORD(group, expandedcolortbl) WORD(group, field)             \
    WORD(group, fldinst) WORD(group, fldrslt) WORD(group, fonttbl) WORD(group, footnote) WORD(group, info)   \
    WORD(group, keywords) WORD(group, levelmarker) WORD(group, leveltext) WORD(group, listoverridetable)     \
    WORD(group, listtable) WORD(group, listtext) WORD(group, manager) WORD(group, nesttableprops)            \
    WORD(group, NeXTGraphic) WORD(group, nonshppict) WORD(group, object) WORD(group, operator_)              \
    WORD(group, pict) WORD(group, pn) WORD(group, pntext) WORD(group, pntxta) WORD(group, pntxtb)            \
    WORD(group, result) WORD(group, revtim) WORD(group, rtf) WORD(group, shp) WORD(group, shpgrp)            \
    WORD(group, shpinst) WORD(group, shppict) WORD(group, shptxt) WORD(group, sn) WORD(group, sp)            \
    WORD(group, stylesheet) WORD(group, subject) WORD(group, sv) WORD(group, title) WORD(group, ud)          \
    WORD(group, upr)                                                                                         \
    /* Groups that are passed over even without a star. */                                                   \
    WORD(skipped, aftncn) WORD(skipped, aftnsep) WORD(skipped, aftnsepc) WORD(skipped, annotation)           \
    WORD(skipped, atnauthor) WORD(skipped, atnid) WORD(skipped, atnref) WORD(skipped, atntime)               \
    WORD(skipped, atrfend) WORD(skipped, atrfstart) WORD(skipped, bkmkend) WORD(skipped, bkmkstart)          \
    WORD(skipped, buptim) WORD(skipped, datafield) WORD(skipped, filetbl) WORD(skipped, footer)              \
    WORD(skipped, footerf) WORD(skipped, footerl) WORD(skipped, footerr) WORD(skipped, formfield)            \
    WORD(skipped, ftncn) WORD(skipped, ftnsep) WORD(skipped, ftnsepc) WORD(skipped, generator)               \
    WORD(skipped, header) WORD(skipped, headerf) WORD(skipped, headerl) WORD(skipped, headerr)               \
    WORD(skipped, levelnumbers) WORD(skipped, list) WORD(skipped, listname) WORD(skipped, listpicture)       \
    WORD(skipped, nonesttables) WORD(skipped, objclass) WORD(skipped, objdata) WORD(skipped, objname)        \
    WORD(skipped, picprop) WORD(skipped, printim) WORD(skipped, private_) WORD(skipped, revtbl)              \
    WORD(skipped, rxe) WORD(skipped, shprslt) WORD(skipped, tc) WORD(skipped, tcn) WORD(skipped, template_)  \
    WORD(skipped, txe) WORD(skipped, xe)                                                                     \
    /* What the document says of itself. */                                                                  \
    WORD(document, ansi) WORD(document, ansicpg) WORD(document, cocoartf) WORD(document, cocoatextscaling)   \
    WORD(document, deff) WORD(document, deftab) WORD(document, hyphauto) WORD(document, hyphfactor)          \
    WORD(document, mac) WORD(document, margb) WORD(document, margl) WORD(document, margr)                    \
    WORD(document, margt) WORD(document, paperh) WORD(document, paperw) WORD(document, pc)                   \
    WORD(document, pca) WORD(document, viewh) WORD(document, viewkind) WORD(document, viewscale)             \
    WORD(document, vieww)                                                                                    \
    WORD(time, dy) WORD(time, hr) WORD(time, min) WORD(time, mo) WORD(time, sec) WORD(time, timesinceref)    \
    WORD(time, yr)                                                                                           \
    /* Entries of the tables of fonts, colours and lists. */                                                 \
    WORD(font, cpg) WORD(font, fcharset) WORD(font, fdecor) WORD(font, fmodern) WORD(font, fnil)             \
    WORD(font, fprq) WORD(font, froman) WORD(font, fscript) WORD(font, fswiss)                               \
    WORD(color, blue) WORD(color, c) WORD(color, csgenericrgb) WORD(color, csgray) WORD(color, cspthree)     \
    WORD(color, cssrgb) WORD(color, green) WORD(color, red)                                                  \
    WORD(list, levelnfc) WORD(list, levelnfcn) WORD(list, levelstartat) WORD(list, lfolevel)                 \
    WORD(list, listid) WORD(list, listlevel) WORD(list, listoverride) WORD(list, listoverrideformat)         \
    WORD(list, listoverridestartat)                                                                          \
    WORD(numbering, pndec) WORD(numbering, pnlcltr) WORD(numbering, pnlcrm) WORD(numbering, pnlvlblt)        \
    WORD(numbering, pnlvlcont) WORD(numbering, pnstart) WORD(numbering, pnucltr) WORD(numbering, pnucrm)     \
    /* Pictures, also in packages. */                                                                        \
    WORD(picture, dibitmap) WORD(picture, emfblip) WORD(picture, height) WORD(picture, jpegblip)             \
    WORD(picture, macpict) WORD(picture, piccropb) WORD(picture, piccropl) WORD(picture, piccropr)           \
    WORD(picture, piccropt) WORD(picture, pich) WORD(picture, pichgoal) WORD(picture, picscalex)             \
    WORD(picture, picscaley) WORD(picture, picw) WORD(picture, picwgoal) WORD(picture, pngblip)              \
    WORD(picture, wbitmap) WORD(picture, width) WORD(picture, wmetafile)
// clang-format on

namespace kelvo {

enum class RTFWord : std::uint16_t {
    unknown,
#define KELVO_RTF_ENUMERATOR(kind, name) name,
    KELVO_RTF_WORDS(KELVO_RTF_ENUMERATOR)
#undef KELVO_RTF_ENUMERATOR
};

enum class RTFWordKind : std::uint8_t {
    unknown,
    character,
    paragraph,
    row,
    text,
    group,
    skipped,
    document,
    time,
    font,
    color,
    list,
    numbering,
    picture
};

struct RTFWordEntry {
    RTFWord word = RTFWord::unknown;
    RTFWordKind kind = RTFWordKind::unknown;
};

/// Upper and lower case differ.
RTFWordEntry rtfWordNamed(std::string_view name);

} // namespace kelvo
