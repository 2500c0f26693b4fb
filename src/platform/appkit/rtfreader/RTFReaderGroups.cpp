#include "platform/appkit/NSFileWrapper.h"
#include "platform/appkit/RTFPackage.h"
#include "platform/appkit/rtfreader/RTFField.h"
#include "platform/appkit/rtfreader/RTFReader.h"
#include "platform/foundation/NSFileManager.h"

#include <utility>

// Groups whose text is not, or not only, that of the document: how they begin and what becomes of them at
// their ends.

namespace kelvo {
namespace {

/// Notes and frames within each other.
constexpr std::uint8_t maximumStoryDepth = 8;

} // namespace

void RTFReader::readGroupWord(RTFWord word, bool isAtGroupStart) {
    const Destination destination = state().destination;
    switch (word) {
    case RTFWord::fonttbl:
        return enter(Destination::fontTable);
    case RTFWord::colortbl:
        return enter(Destination::colorTable);
    case RTFWord::expandedcolortbl:
        return enter(Destination::expandedColorTable);
    case RTFWord::stylesheet:
        return enter(Destination::styleSheet);
    case RTFWord::listtable:
    case RTFWord::listoverridetable:
        return enter(Destination::listTable);
    case RTFWord::list:
        if (destination == Destination::listTable)
            return resources_.lists.beginList();
        break;
    case RTFWord::levelmarker:
    case RTFWord::leveltext:
        if (destination == Destination::listTable)
            return enter(Destination::captured, word);
        break;
    case RTFWord::info:
        return enter(Destination::info);
    case RTFWord::title:
    case RTFWord::subject:
    case RTFWord::author:
    case RTFWord::manager:
    case RTFWord::company:
    case RTFWord::copyright:
    case RTFWord::category:
    case RTFWord::operator_:
    case RTFWord::editor:
    case RTFWord::comment:
    case RTFWord::doccomm:
    case RTFWord::keywords:
        if (destination == Destination::info)
            return enter(Destination::captured, word);
        break;
    case RTFWord::creatim:
    case RTFWord::revtim:
        if (destination == Destination::info)
            return enter(Destination::time, word);
        break;
    case RTFWord::fldinst:
        if (destination == Destination::body)
            return enter(Destination::captured, word);
        break;
    case RTFWord::fldrslt:
        if (!state().isFieldShown)
            return;
        break;
    case RTFWord::pn:
        if (destination == Destination::body)
            return enter(Destination::oldList);
        break;
    case RTFWord::pntxta:
    case RTFWord::pntxtb:
        if (destination == Destination::oldList)
            return enter(Destination::captured, word);
        break;
    case RTFWord::pict:
        if (destination == Destination::body || destination == Destination::wordsOnly)
            return enter(Destination::picture);
        break;
    case RTFWord::field:
        state().isFieldShown = false;
        return;
    case RTFWord::shppict:
        hasShapePicture_ = false;
        return;
    case RTFWord::nonshppict:
        if (!std::exchange(hasShapePicture_, false))
            return;
        break;
    case RTFWord::NeXTGraphic:
        if (destination == Destination::body) {
            packageName_.clear();
            packageSize_ = NSSize();
            isPackageNameEnded_ = false;
            return enter(Destination::packageName);
        }
        break;
    case RTFWord::shpinst:
    case RTFWord::sp:
    case RTFWord::do_:
        return enter(Destination::wordsOnly);
    case RTFWord::sn:
        if (destination == Destination::wordsOnly)
            return enter(Destination::captured, word);
        break;
    case RTFWord::sv:
        if (shapeProperty_ == u"pib")
            return;
        break;
    case RTFWord::footnote:
    case RTFWord::shptxt:
    case RTFWord::dptxbxtext:
        if (destination == Destination::body || destination == Destination::wordsOnly)
            return enterStory(word);
        break;
    case RTFWord::upr:
        skipsNextGroup_ = true;
        return;
    case RTFWord::listtext:
    case RTFWord::pntext:
        if (destination == Destination::body && keepsStates() && depth_ > 1 &&
            !state().story->hasOpenParagraph())
            state().word = RTFWord::listtext;
        return;
    // What they hold is read as if they were not there.
    case RTFWord::nesttableprops:
    case RTFWord::object:
    case RTFWord::result:
    case RTFWord::rtf:
    case RTFWord::shp:
    case RTFWord::shpgrp:
    case RTFWord::ud:
        return;
    default:
        break;
    }
    if (isAtGroupStart)
        scanner_.skipGroup();
}

void RTFReader::enter(Destination destination, RTFWord word) {
    // The destination could not end where its group does.
    if (!keepsStates() || depth_ <= 1) {
        scanner_.skipGroup();
        return;
    }
    state().destination = destination;
    state().word = word;
    state().isCodePageKnown = false;
}

void RTFReader::enterStory(RTFWord word) {
    if (!keepsStates() || depth_ <= 1)
        return;
    state().destination = Destination::body;
    if (state().storyDepth >= maximumStoryDepth)
        return;
    openStories_.push_back(std::make_unique<RTFStory>(resources_.cells, resources_.colors));
    state().story = openStories_.back().get();
    state().word = word;
    state().paragraph = RTFParagraphFormat();
    state().paragraphFormat = -1;
    ++state().storyDepth;
}

void RTFReader::endStory(RTFWord word) {
    const std::unique_ptr<RTFStory> story = std::move(openStories_.back());
    openStories_.pop_back();
    if (story->isEmpty())
        return;
    story->finish();
    if (word == RTFWord::footnote)
        notes_.appendStory(std::move(*story), -1);
    else
        state().story->addFrame(std::move(*story));
}

void RTFReader::endDestination(const State& ended) {
    switch (ended.destination) {
    case Destination::fontTable:
        resources_.fonts.append(u";");
        state().isCodePageKnown = false;
        break;
    case Destination::body:
        if (ended.word == RTFWord::listtext && ended.story == state().story)
            state().story->endMarker(characterFormat());
        break;
    case Destination::captured:
        endCapture(ended.word);
        break;
    case Destination::time:
        info_.setTime(ended.word, std::exchange(time_, RTFTime()));
        break;
    case Destination::oldList:
        endOldList();
        break;
    case Destination::picture:
        if (auto attachment =
                std::exchange(picture_, RTFPicture()).attachmentNumbered(resources_.attachments.size() + 1)) {
            hasShapePicture_ = true;
            appendAttachment(std::move(attachment));
        }
        break;
    case Destination::packageName: {
        while (packageName_.ends_with(' '))
            packageName_.pop_back();
        const NSString name =
            NSFileManager::defaultManager().stringWithFileSystemRepresentation(packageName_);
        auto attachment = std::make_shared<NSTextAttachment>();
        attachment->displaySize = packageSize_;
        if (package_)
            attachment->fileWrapper = rtfPackageEntry(*package_, name);
        if (!attachment->fileWrapper) {
            auto wrapper = NSFileWrapper::initRegularFileWithContents(NSData::data());
            wrapper->setPreferredFilename(name);
            attachment->fileWrapper = std::move(wrapper);
        }
        appendAttachment(std::move(attachment));
        state().isPackageMarkNext = true;
        break;
    }
    default:
        break;
    }
}

void RTFReader::endCapture(RTFWord word) {
    const std::u16string text = std::exchange(captured_, {});
    switch (word) {
    case RTFWord::fldinst:
        captured_ = text;
        endField();
        captured_.clear();
        break;
    case RTFWord::levelmarker:
        resources_.lists.setMarker(text);
        break;
    case RTFWord::leveltext:
        resources_.lists.setText(text);
        break;
    case RTFWord::pntxtb:
        oldList_.setTextBefore(text);
        break;
    case RTFWord::pntxta:
        oldList_.setTextAfter(text);
        break;
    case RTFWord::sn:
        shapeProperty_ = text;
        break;
    default:
        info_.setText(word, text);
        break;
    }
}

void RTFReader::endField() {
    if (depth_ <= 1)
        return;
    const RTFField field = RTFField::parse(captured_);
    if (!field.link.isNil()) {
        const auto [entry, isNew] =
            linkIndices_.try_emplace(field.link, static_cast<std::int32_t>(resources_.links.size()));
        if (isNew)
            resources_.links.push_back(field.link);
        state().link = entry->second;
        state().format = -1;
    }
    if (!field.symbol || state().destination != Destination::body)
        return;
    state().isFieldShown = true;
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
    auto& lists = resources_.oldLists;
    const RTFParagraph* const last = state().story->lastParagraph();
    const std::int32_t previous = last ? resources_.paragraphFormats[last->format].oldList : -1;
    if (previous < 0 || !(*lists[static_cast<std::size_t>(previous)] == *list)) {
        lists.push_back(std::make_shared<const NSTextList>(*list));
        state().paragraph.oldList = static_cast<std::int32_t>(lists.size() - 1);
    } else {
        state().paragraph.oldList = previous;
    }
}

} // namespace kelvo
