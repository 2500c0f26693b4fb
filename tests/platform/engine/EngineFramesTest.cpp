#include "platform/engine/EngineFrames.h"

#include "platform/engine/EngineSocket.h"
#include "platform/foundation/NSException.h"
#include "platform/foundation/SealedMemory.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <filesystem>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <unistd.h>

namespace kelvo {
namespace {

std::string bytesOf(unsigned kind, unsigned descriptors, unsigned flags, std::uint64_t length) {
    std::string bytes{static_cast<char>(kind), static_cast<char>(descriptors), static_cast<char>(flags)};
    bytes.resize(8);
    for (int shift = 0; shift < 64; shift += 8)
        bytes.push_back(static_cast<char>(length >> shift));
    bytes.resize(32);
    return bytes;
}

TEST(EngineFrames, HeadsAreCheckedBeforeTheyAreTrusted) {
    const struct {
        const char* name;
        std::string bytes;
        bool isHead;
    } rows[] = {
        {"message without contents", bytesOf(1, 0, 0, 0), true},
        {"longest on the socket", bytesOf(6, 0, 0, leastSealedBytes), true},
        {"longer on the socket", bytesOf(6, 0, 0, leastSealedBytes + 1), false},
        {"longest in memory", bytesOf(2, 1, 1, maximumSizeInBytes), true},
        {"longer in memory", bytesOf(2, 1, 1, maximumSizeInBytes + 1ULL), false},
        {"longest number", bytesOf(2, 1, 1, ~std::uint64_t{}), false},
        {"in memory that does not come", bytesOf(2, 0, 1, 10), false},
        {"data and memory", bytesOf(2, 16, 3, 10), true},
        {"more descriptors than there may be", bytesOf(2, 17, 3, 10), false},
        {"places without data", bytesOf(2, 1, 3, 10), false},
        {"data without places", bytesOf(2, 1, 0, 10), false},
        {"unknown flag", bytesOf(2, 0, 8, 10), false},
        {"something where nothing is", bytesOf(2, 0, 0, 10).replace(7, 1, "x"), false},
        {"no kind", bytesOf(0, 0, 0, 1), false},
        {"past the last kind", bytesOf(8, 0, 0, 1), false},
        {"high bit", bytesOf(0x81, 0, 0, 1), false},
        {"cut off", bytesOf(1, 0, 0, 0).substr(1), false},
    };
    for (const auto& row : rows) {
        const auto head = EngineFrameHead::withBytes(row.bytes);
        EXPECT_EQ(head.has_value(), row.isHead) << row.name;
        EXPECT_EQ(head.value_or(EngineFrameHead()).bytes(),
                  row.isHead ? row.bytes : EngineFrameHead().bytes())
            << row.name;
    }
}

/// What the one side makes of what the other has sent.
class EngineSocketTest : public testing::Test {
protected:
    EngineSocketTest() {
        int ends[2];
        EXPECT_EQ(::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends), 0);
        near = FileDescriptor(ends[0]);
        far = FileDescriptor(ends[1]);
    }
    std::optional<EngineFrame> carried(const Value& value, EngineFrameData accepted) {
        EngineFrameWriter writer;
        EngineFrameHead head;
        head.cpuMicroseconds = 12;
        head.peakBytes = 34;
        head.asksForPeak = true;
        writer.add({head, value});
        EXPECT_EQ(writer.send(near.get(), 0), EngineFrameWriter::Event::done);
        EngineFrameReader reader(accepted);
        while (!reader.hasWholeFrame())
            EXPECT_EQ(reader.receive(far.get(), 0), EngineFrameReader::Event::some);
        auto frame = reader.takeFrame();
        EXPECT_EQ(reader.lastHead().cpuMicroseconds, 12U);
        EXPECT_EQ(reader.lastHead().peakBytes, 34U);
        EXPECT_TRUE(reader.lastHead().asksForPeak);
        EXPECT_TRUE(reader.isEmpty());
        return frame;
    }

    FileDescriptor near, far;
};

TEST_F(EngineSocketTest, DataTravelsByItsDescriptor) {
    const tests::TemporaryFolder folder;
    const std::string path = folder.write("file", "what is in the file");
    const NSData file = NSData::dataWithContentsOfFileWhenNeeded(NSString::stringWithUTF8String(path));
    const NSData sealed = dataForOtherProcesses(std::string(100'000, 's'));
    const NSData inMemory = NSData::dataWithBytesNoCopy(std::string(100'000, 'm'));
    const Value value = NSMutableDictionary::dictionaryWithObjectsAndKeys(
        {{NSArray::arrayWithObjects({u"first", file, NSArray::arrayWithObjects({sealed})}), u"list"},
         {NSData::data(), u"empty"},
         {inMemory, u"large"}});
    const auto frame = carried(value, EngineFrameData::filesAndSealedMemory);
    ASSERT_TRUE(frame);
    const NSArray list = frame->value.dictionary().objectForKey(u"list").array();
    EXPECT_GE(list.objectAtIndex(1).data().descriptor(), 0);
    EXPECT_TRUE(file.isUnread());
    EXPECT_GE(list.objectAtIndex(2).array().objectAtIndex(0).data().descriptor(), 0);
    EXPECT_EQ(frame->value, value);

    // A file that is larger than data may be is read piece by piece.
    const std::string huge = folder.write("huge", "start");
    std::filesystem::resize_file(huge, std::uint64_t{3} << 30);
    const Value open = dataWithOpenFile(FileDescriptor(::open(huge.c_str(), O_RDONLY | O_CLOEXEC)));
    EXPECT_FALSE(carried(open, EngineFrameData::filesAndSealedMemory));
    const auto pieces = carried(open, EngineFrameData::openFilesAndSealedMemory);
    ASSERT_TRUE(pieces);
    EXPECT_TRUE(pieces->value.data().isEmpty());
    char start[5];
    EXPECT_EQ(::pread(pieces->value.data().descriptor(), start, sizeof start, 0), 5);
    EXPECT_EQ(std::string_view(start, sizeof start), "start");

    // Only one side is handed files.
    EXPECT_FALSE(carried(value, EngineFrameData::sealedMemory));
    EXPECT_EQ(carried(sealed, EngineFrameData::sealedMemory)->value, Value(sealed));
    // More than a frame has descriptors for: the rest goes with the contents.
    const NSArray many = NSArray::arrayWithValues(std::vector<Value>(40, sealed));
    EXPECT_EQ(carried(many, EngineFrameData::sealedMemory)->value, Value(many));
    EXPECT_TRUE(carried({}, EngineFrameData::sealedMemory)->value.isNil());
}

TEST(EngineFrames, PlacesOfDataAreChecked) {
    const NSData sealed = dataForOtherProcesses(std::string(100'000, 's'));
    const Value zero = NSNumber::numberWithInt(0);
    const auto decode = [&](const Value& contents) {
        EncodedEngineFrame frame(EngineFrameKind::answer, contents);
        auto head = *EngineFrameHead::withBytes(frame.bytes);
        head.hasPlaces = true;
        head.descriptorCount = 1;
        std::vector<FileDescriptor> descriptors;
        descriptors.emplace_back(::fcntl(sealed.descriptor(), F_DUPFD_CLOEXEC, 3));
        return decodedEngineFrame(head, frame.bytes.substr(EngineFrameHead::size), std::move(descriptors),
                                  EngineFrameData::sealedMemory);
    };
    const auto contents = [](const Value& value, const Value& path) {
        return NSArray::arrayWithObjects({value, NSArray::arrayWithObjects({path})});
    };
    const Value list = NSArray::arrayWithObjects({NSData::data(), u"text"});
    const struct {
        const char* name;
        Value contents;
        bool isRead;
    } rows[] = {
        {"in an array", contents(list, NSArray::arrayWithObjects({zero})), true},
        {"the whole", contents(NSData::data(), NSArray::array()), true},
        {"past the end", contents(list, NSArray::arrayWithObjects({NSNumber::numberWithInt(2)})), false},
        {"before the beginning", contents(list, NSArray::arrayWithObjects({NSNumber::numberWithInt(-1)})),
         false},
        {"no data", contents(list, NSArray::arrayWithObjects({NSNumber::numberWithInt(1)})), false},
        {"a key of an array", contents(list, NSArray::arrayWithObjects({u"0"})), false},
        {"below what holds nothing", contents(list, NSArray::arrayWithObjects({zero, zero})), false},
        {"a missing key", contents(NSDictionary::dictionary(), NSArray::arrayWithObjects({u"key"})), false},
        {"no path", contents(list, u"0"), false},
        {"fewer paths than data", NSArray::arrayWithObjects({list, NSArray::array()}), false},
        {"no paths", list, false},
        {"nothing", u"text", false},
    };
    for (const auto& row : rows)
        EXPECT_EQ(decode(row.contents).has_value(), row.isRead) << row.name;
    EXPECT_THROW(EncodedEngineFrame(EngineFrameKind::message, NSURL::URLWithString(u"http://a/")),
                 NSException);
}

TEST(SealedMemory, NobodyCanChangeIt) {
    SealedMemory memory(100);
    memory.bytes()[50] = 'x';
    const NSData data = memory.seal(60);
    ASSERT_EQ(data.length(), 60U);
    EXPECT_EQ(data.bytes()[50], 'x');
    EXPECT_EQ(data.bytes()[51], 0);
    EXPECT_TRUE(isSealedMemory(data.descriptor()));
    EXPECT_EQ(::pwrite(data.descriptor(), "y", 1, 0), -1);
    EXPECT_EQ(::ftruncate(data.descriptor(), 10), -1);
    EXPECT_EQ(::ftruncate(data.descriptor(), 1000), -1);
    EXPECT_EQ(::mmap(nullptr, 60, PROT_READ | PROT_WRITE, MAP_SHARED, data.descriptor(), 0), MAP_FAILED);

    // Each missing seal is seen.
    for (const int seals :
         {F_SEAL_WRITE | F_SEAL_SHRINK, F_SEAL_WRITE | F_SEAL_GROW, F_SEAL_SHRINK | F_SEAL_GROW, 0}) {
        FileDescriptor open(::memfd_create("test", MFD_CLOEXEC | MFD_ALLOW_SEALING));
        ASSERT_EQ(::ftruncate(open.get(), 10), 0);
        ASSERT_EQ(::fcntl(open.get(), F_ADD_SEALS, seals), 0);
        EXPECT_TRUE(dataWithSealedMemory(std::move(open)).isNil()) << seals;
    }
    EXPECT_EQ(dataForOtherProcesses(std::string(leastSealedBytes, 'x')).descriptor(), -1);
    EXPECT_GE(dataForOtherProcesses(std::string(leastSealedBytes + 1, 'x')).descriptor(), 0);
}

TEST(NSDataOnFiles, IsReadWhenItIsAskedFor) {
    const tests::TemporaryFolder folder;
    const NSString path = NSString::stringWithUTF8String(folder.write("file", "0123456789"));
    const NSData data = NSData::dataWithContentsOfFileWhenNeeded(path);
    EXPECT_EQ(data.length(), 10U);
    folder.write("file", "abcd");
    EXPECT_EQ(data.subdataWithRange({2, 5}).characters(), std::string_view("cd\0\0\0", 5));
    EXPECT_TRUE(data.isUnread());
    // What is not there any more is zeros.
    EXPECT_EQ(data.characters(), std::string_view("abcd\0\0\0\0\0\0", 10));
    EXPECT_FALSE(data.isUnread());
    EXPECT_EQ(data.subdataWithRange({1, 2}).characters(), "bc");
    EXPECT_FALSE(NSData::dataWithContentsOfFileWhenNeeded(u"/proc/self/status").isEmpty());
    EXPECT_TRUE(NSData::dataWithContentsOfFileWhenNeeded(u"/nowhere").isNil());
    EXPECT_TRUE(NSData::dataWithContentsOfDescriptorWhenNeeded(::open("/", O_RDONLY)).isNil());
}

} // namespace
} // namespace kelvo
