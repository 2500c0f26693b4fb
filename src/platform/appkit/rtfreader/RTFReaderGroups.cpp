#include "platform/appkit/NSFileWrapper.h"
#include "platform/appkit/RTFPackage.h"
#include "platform/appkit/rtfreader/RTFField.h"
#include "platform/appkit/rtfreader/RTFReader.h"

#include <utility>

// Groups whose text is not, or not only, that of the document: how they begin and what becomes of them at
// their ends.

namespace kelvo {
namespace {

/// Notes and frames within each other.
constexpr std::uint8_t maximumStoryDepth = 8;

} // namespace

std::span<const RTFReader::GroupWord> RTFReader::groupWords() {
    using Reader = RTFReader;
    using Word = GroupWord;
    constexpr auto in = [](auto... destinations) {
        return (std::uint32_t{0} | ... | (1U << static_cast<unsigned>(destinations)));
    };
    constexpr std::uint32_t anywhere = ~0U;
    constexpr std::uint32_t inText = in(Destination::body, Destination::wordsOnly);
    constexpr std::uint32_t inInfo = in(Destination::info);
    constexpr std::uint32_t inLists = in(Destination::listTable);
    constexpr auto endInfoText = [](Reader& reader, const State& ended) {
        reader.info_.setText(ended.group->name, std::exchange(reader.captured_, {}));
    };
    constexpr auto endTime = [](Reader& reader, const State& ended) {
        reader.info_.setTime(ended.group->name, std::exchange(reader.time_, RTFTime()));
    };
    constexpr auto beginMarker = [](Reader& reader, const Word& word) {
        if (reader.state().destination == Destination::body && reader.keepsStates() && reader.depth_ > 1 &&
            !reader.state().story->hasOpenParagraph())
            reader.state().group = &word;
        return true;
    };
    constexpr auto endMarker = [](Reader& reader, const State& ended) {
        if (ended.story == reader.state().story)
            ended.story->endMarker(reader.characterFormat());
    };
    static constexpr Word words[] = {
        // Tables of the head.
        {"fonttbl", anywhere, enter<Destination::fontTable>,
         [](Reader& reader, const State&) {
             reader.definitions_.fonts.append(u";");
             reader.state().isCodePageKnown = false;
         }},
        {"colortbl", anywhere, enter<Destination::colorTable>},
        {"expandedcolortbl", anywhere, enter<Destination::expandedColorTable>},
        {"stylesheet", anywhere, enter<Destination::styleSheet>},
        {"listtable", anywhere, enter<Destination::listTable>},
        {"listoverridetable", anywhere, enter<Destination::listTable>},
        {"list", inLists,
         [](Reader& reader, const Word&) {
             reader.definitions_.lists.beginList();
             return true;
         }},
        {"levelmarker", inLists, enter<Destination::captured>,
         [](Reader& reader, const State&) {
             reader.definitions_.lists.setMarker(std::exchange(reader.captured_, {}));
         }},
        {"leveltext", inLists, enter<Destination::captured>,
         [](Reader& reader, const State&) {
             reader.definitions_.lists.setText(std::exchange(reader.captured_, {}));
         }},
        {"generator", in(Destination::body), enter<Destination::captured>,
         [](Reader& reader, const State&) {
             reader.info_.setGenerator(std::exchange(reader.captured_, {}));
         }},
        {"info", anywhere, enter<Destination::info>},
        {"title", inInfo, enter<Destination::captured>, endInfoText},
        {"subject", inInfo, enter<Destination::captured>, endInfoText},
        {"author", inInfo, enter<Destination::captured>, endInfoText},
        {"manager", inInfo, enter<Destination::captured>, endInfoText},
        {"company", inInfo, enter<Destination::captured>, endInfoText},
        {"copyright", inInfo, enter<Destination::captured>, endInfoText},
        {"category", inInfo, enter<Destination::captured>, endInfoText},
        {"operator", inInfo, enter<Destination::captured>, endInfoText},
        {"editor", inInfo, enter<Destination::captured>, endInfoText},
        {"comment", inInfo, enter<Destination::captured>, endInfoText},
        {"doccomm", inInfo, enter<Destination::captured>, endInfoText},
        {"keywords", inInfo, enter<Destination::captured>, endInfoText},
        {"creatim", inInfo, enter<Destination::time>, endTime},
        {"revtim", inInfo, enter<Destination::time>, endTime},
        // Fields.
        {"field", anywhere,
         [](Reader& reader, const Word&) {
             reader.state().isFieldShown = false;
             return true;
         }},
        {"fldinst", in(Destination::body), enter<Destination::captured>,
         [](Reader& reader, const State&) {
             reader.endField();
             reader.captured_.clear();
         }},
        {"fldrslt", anywhere, [](Reader& reader, const Word&) { return !reader.state().isFieldShown; }},
        // Markers of lists.
        {"listtext", anywhere, beginMarker, endMarker},
        {"pntext", anywhere, beginMarker, endMarker},
        {"pn", in(Destination::body), enter<Destination::oldList>,
         [](Reader& reader, const State&) { reader.endOldList(); }},
        {"pntxta", in(Destination::oldList), enter<Destination::captured>,
         [](Reader& reader, const State&) {
             reader.oldList_.setTextAfter(std::exchange(reader.captured_, {}));
         }},
        {"pntxtb", in(Destination::oldList), enter<Destination::captured>,
         [](Reader& reader, const State&) {
             reader.oldList_.setTextBefore(std::exchange(reader.captured_, {}));
         }},
        // Pictures and attachments. A picture that is there twice is shown once.
        {"pict", inText, enter<Destination::picture>,
         [](Reader& reader, const State&) { reader.endPicture(); }},
        {"shppict", anywhere,
         [](Reader& reader, const Word&) {
             reader.hasShapePicture_ = false;
             return true;
         }},
        {"nonshppict", anywhere,
         [](Reader& reader, const Word&) { return !std::exchange(reader.hasShapePicture_, false); }},
        {"NeXTGraphic", in(Destination::body),
         [](Reader& reader, const Word& word) {
             reader.packageMark_ = RTFPackageMark();
             return enter<Destination::packageName>(reader, word);
         },
         [](Reader& reader, const State&) { reader.endPackageMark(); }},
        // Shapes.
        {"shpinst", anywhere,
         [](Reader& reader, const Word& word) {
             reader.state().shape = {};
             return enter<Destination::wordsOnly>(reader, word);
         }},
        {"sp", anywhere, enter<Destination::wordsOnly>},
        {"do", anywhere, enter<Destination::wordsOnly>},
        {"sn", in(Destination::wordsOnly), enter<Destination::captured>,
         [](Reader& reader, const State&) { reader.shapeProperty_ = std::exchange(reader.captured_, {}); }},
        {"sv", anywhere, [](Reader& reader, const Word&) { return reader.shapeProperty_ == u"pib"; }},
        // Notes and frames.
        {"footnote", inText, enterStory},
        {"shptxt", inText, enterStory},
        {"dptxbxtext", inText, enterStory},
        // The next group is for readers that know no Unicode.
        {"upr", anywhere,
         [](Reader& reader, const Word&) {
             reader.skipsNextGroup_ = true;
             return true;
         }},
        // What these hold is read as if they were not there.
        {"nesttableprops", anywhere, readOn},
        {"object", anywhere, readOn},
        {"result", anywhere, readOn},
        {"rtf", anywhere, readOn},
        {"shp", anywhere, readOn},
        {"shpgrp", anywhere, readOn},
        {"ud", anywhere, readOn},
        // Passed over even without a star.
        {"aftncn"},
        {"aftnsep"},
        {"aftnsepc"},
        {"annotation"},
        {"atnauthor"},
        {"atnid"},
        {"atnref"},
        {"atntime"},
        {"atrfend"},
        {"atrfstart"},
        {"bkmkend"},
        {"bkmkstart"},
        {"buptim"},
        {"datafield"},
        {"filetbl"},
        {"footer"},
        {"footerf"},
        {"footerl"},
        {"footerr"},
        {"formfield"},
        {"ftncn"},
        {"ftnsep"},
        {"ftnsepc"},
        {"header"},
        {"headerf"},
        {"headerl"},
        {"headerr"},
        {"levelnumbers"},
        {"listname"},
        {"listpicture"},
        {"nonesttables"},
        {"objclass"},
        {"objdata"},
        {"objname"},
        {"picprop"},
        {"printim"},
        {"private"},
        {"revtbl"},
        {"rxe"},
        {"shprslt"},
        {"tc"},
        {"tcn"},
        {"template"},
        {"txe"},
        {"xe"},
    };
    return words;
}

void RTFReader::readGroupWord(const GroupWord& word, bool isAtGroupStart) {
    const bool isHere = (word.places >> static_cast<unsigned>(state().destination) & 1) != 0;
    if (isHere && word.begin(*this, word))
        return;
    if (isAtGroupStart)
        scanner_.skipGroup();
}

template <RTFReader::Destination destination>
bool RTFReader::enter(RTFReader& reader, const GroupWord& word) {
    // The destination could not end where its group does.
    if (!reader.keepsStates() || reader.depth_ <= 1) {
        reader.scanner_.skipGroup();
        return true;
    }
    State& state = reader.state();
    state.destination = destination;
    state.group = &word;
    state.isCodePageKnown = false;
    return true;
}

bool RTFReader::enterStory(RTFReader& reader, const GroupWord& word) {
    if (!reader.keepsStates() || reader.depth_ <= 1)
        return true;
    State& state = reader.state();
    state.destination = Destination::body;
    if (state.storyDepth >= maximumStoryDepth)
        return true;
    reader.openStories_.push_back(
        std::make_unique<RTFStory>(reader.definitions_.cells, reader.definitions_.colors));
    state.story = reader.openStories_.back().get();
    state.group = &word;
    state.paragraph = RTFParagraphFormat();
    state.paragraphFormat = -1;
    state.shape = {};
    ++state.storyDepth;
    return true;
}

void RTFReader::endStory(bool isNote) {
    const std::unique_ptr<RTFStory> story = std::move(openStories_.back());
    openStories_.pop_back();
    if (story->isEmpty())
        return;
    story->finish();
    if (isNote)
        notes_.appendStory(std::move(*story), -1);
    else
        state().story->addFrame(std::move(*story));
}

void RTFReader::endPicture() {
    const auto [left, top, right, bottom] = state().shape;
    picture_.fillShape(std::int64_t{right} - left, std::int64_t{bottom} - top);
    if (auto attachment =
            std::exchange(picture_, RTFPicture()).attachmentNumbered(definitions_.attachments.size() + 1)) {
        hasShapePicture_ = true;
        appendAttachment(std::move(attachment));
    }
}

void RTFReader::endPackageMark() {
    const NSString name = packageMark_.name();
    auto attachment = std::make_shared<NSTextAttachment>();
    attachment->displaySize = packageMark_.displaySize();
    if (package_)
        attachment->fileWrapper = rtfPackageEntry(*package_, name);
    if (!attachment->fileWrapper) {
        auto wrapper = NSFileWrapper::initRegularFileWithContents(NSData::data());
        wrapper->setPreferredFilename(name);
        attachment->fileWrapper = std::move(wrapper);
    }
    appendAttachment(std::move(attachment));
    state().isPackageMarkNext = true;
}

void RTFReader::endField() {
    if (depth_ <= 1)
        return;
    const RTFField field = RTFField::parse(captured_);
    if (!field.link.isNil()) {
        const auto [entry, isNew] =
            linkIndices_.try_emplace(field.link, static_cast<std::int32_t>(definitions_.links.size()));
        if (isNew)
            definitions_.links.push_back(field.link);
        state().link = entry->second;
        state().format = -1;
    }
    if (state().destination != Destination::body || (!field.symbol && field.text.empty()))
        return;
    state().isFieldShown = true;
    if (!field.symbol)
        return appendUnits(field.text);
    const std::int32_t symbol = *field.symbol;
    if (field.isSymbolUnicode || symbol > 0xFF) {
        readUnicode(symbol);
        unicodeSkip_ = 0;
        return;
    }
    const RTFCodePage page = field.symbolFont == u"Symbol"      ? RTFSymbolCodePage
                             : field.symbolFont == u"Wingdings" ? RTFWingdingsCodePage
                                                                : codePage();
    const char byte = static_cast<char>(symbol);
    std::u16string units;
    charsets_.decode({&byte, 1}, page, units);
    appendUnits(units);
}

void RTFReader::endOldList() {
    const std::optional<NSTextList> list = std::exchange(oldList_, RTFOldList()).list();
    state().paragraphFormat = -1;
    if (!list) {
        state().paragraph.oldList = -1;
        return;
    }
    // Each paragraph describes its list anew: it is the one of the paragraph before when that had the same.
    auto& lists = definitions_.oldLists;
    const RTFParagraph* const last = state().story->lastParagraph();
    const std::int32_t previous = last ? definitions_.paragraphFormats[last->format].oldList : -1;
    if (previous < 0 || !(*lists[static_cast<std::size_t>(previous)] == *list)) {
        lists.push_back(std::make_shared<const NSTextList>(*list));
        state().paragraph.oldList = static_cast<std::int32_t>(lists.size() - 1);
    } else {
        state().paragraph.oldList = previous;
    }
}

} // namespace kelvo
