#include "OCStream.h"

#include "support/RecordingStream.h"
#include "support/Slots.h"
#include "support/Thrown.h"

#include <gtest/gtest.h>

#include <string>
#include <type_traits>
#include <vector>

namespace {

using Calls = std::vector<std::string>;
using Outcome = RecordingStream::Outcome;

constexpr unsigned long largestOffset = 0x7FFFFFFFFFFFFFFF;

/// Writes the seeks down without adding anything up.
class SeekRecorder : public OCNullStream {
public:
    unsigned long seek(long offset, OEStreamSeek origin) override {
        seeks.push_back(std::to_string(offset) + " " + std::to_string(origin));
        return answer;
    }
    Calls seeks;
    unsigned long answer = 0;
};

} // namespace

TEST(OCStream, HoldsNothingButItsVirtualTable) {
    EXPECT_EQ(sizeof(OCStream), 8U);
    EXPECT_EQ(sizeof(OCNullStream), 8U);
    EXPECT_EQ(sizeof(OEStreamSeek), 4U);
}

TEST(OCStream, PrimitivesFollowTheDestructorsInTheOrderReadSeekSetSizeWrite) {
    EXPECT_EQ(slots::slotOf(&OCStream::read), 2U);
    EXPECT_EQ(slots::slotOf(&OCStream::seek), 3U);
    EXPECT_EQ(slots::slotOf(&OCStream::setSize), 4U);
    EXPECT_EQ(slots::slotOf(&OCStream::write), 5U);
    EXPECT_EQ(slots::slotCount<OCStream>(), 6U);
    EXPECT_EQ(slots::slotOf(&OCNullStream::read), 2U);
    EXPECT_EQ(slots::slotOf(&OCNullStream::seek), 3U);
    EXPECT_EQ(slots::slotOf(&OCNullStream::setSize), 4U);
    EXPECT_EQ(slots::slotOf(&OCNullStream::write), 5U);
    EXPECT_EQ(slots::slotCount<OCNullStream>(), 6U);
}

TEST(OCStream, IsAbstractAndNotCopyable) {
    EXPECT_TRUE(std::is_abstract_v<OCStream>);
    EXPECT_FALSE(std::is_copy_constructible_v<OCNullStream>);
    EXPECT_FALSE(std::is_copy_assignable_v<OCNullStream>);
    EXPECT_TRUE(std::has_virtual_destructor_v<OCStream>);
}

TEST(OCStream, SeekOriginsHaveTheirValues) {
    EXPECT_EQ(StreamSeekBeginning, 0);
    EXPECT_EQ(StreamSeekCurrent, 1);
    EXPECT_EQ(StreamSeekEnd, 2);
}

TEST(OCStream, PositionIsOneSeekByZeroFromTheCurrentPosition) {
    RecordingStream stream("0123456789");
    stream.position = 7;
    const OCStream& constant = stream;
    EXPECT_EQ(constant.getPosition(), 7U);
    EXPECT_EQ(stream.calls, Calls({"seek 0 current -> 7"}));
}

TEST(OCStream, SizeCostsThreeSeeksAndRestoresThePosition) {
    RecordingStream stream("0123456789");
    stream.position = 7;
    const OCStream& constant = stream;
    EXPECT_EQ(constant.getSize(), 10U);
    EXPECT_EQ(stream.calls,
              Calls({"seek 0 current -> 7", "seek 0 end -> 10", "seek 7 beginning -> 7"}));
    EXPECT_EQ(stream.position, 7U);
}

TEST(OCStream, IsEmptyWhenTheSizeIsZero) {
    RecordingStream empty;
    const OCStream& constant = empty;
    EXPECT_TRUE(constant.isEmpty());
    EXPECT_EQ(empty.calls,
              Calls({"seek 0 current -> 0", "seek 0 end -> 0", "seek 0 beginning -> 0"}));
    RecordingStream stream("a");
    stream.position = 1;
    EXPECT_FALSE(stream.isEmpty());
}

TEST(OCStream, SetPositionBelowTwoToThe63IsOneSeekFromTheBeginning) {
    SeekRecorder stream;
    stream.setPosition(0);
    stream.setPosition(12345);
    stream.setPosition(largestOffset);
    EXPECT_EQ(stream.seeks, Calls({"0 0", "12345 0", "9223372036854775807 0"}));
}

TEST(OCStream, SetPositionFromTwoToThe63OnTakesFurtherStepsFromTheCurrentPosition) {
    SeekRecorder stream;
    stream.setPosition(largestOffset + 1);
    EXPECT_EQ(stream.seeks, Calls({"9223372036854775807 0", "1 1"}));
    stream.seeks.clear();
    stream.setPosition(largestOffset + 1 + 5);
    EXPECT_EQ(stream.seeks, Calls({"9223372036854775807 0", "6 1"}));
    stream.seeks.clear();
    stream.setPosition(2 * largestOffset);
    EXPECT_EQ(stream.seeks, Calls({"9223372036854775807 0", "9223372036854775807 1"}));
    stream.seeks.clear();
    stream.setPosition(~0UL);
    EXPECT_EQ(stream.seeks, Calls({"9223372036854775807 0", "9223372036854775807 1", "1 1"}));
}

TEST(OCStream, SizeRestoresAPositionThatHasTheHighestBitSet) {
    SeekRecorder stream;
    stream.answer = ~0UL;
    EXPECT_EQ(stream.getSize(), ~0UL);
    EXPECT_EQ(stream.seeks, Calls({"0 1", "0 2", "-1 0"}));
}

TEST(OCStream, ReadBufferAsksForWhatIsStillMissing) {
    RecordingStream stream("0123456789");
    stream.chunk = 4;
    char buffer[12] = "-----------";
    stream.readBuffer(buffer, 10);
    EXPECT_EQ(std::string(buffer, 11), "0123456789-");
    EXPECT_EQ(stream.calls, Calls({"read 10 -> 4", "read 6 -> 4", "read 2 -> 2"}));
}

TEST(OCStream, ReadBufferOfZeroBytesDoesNotRead) {
    RecordingStream stream;
    stream.readBuffer(nullptr, 0);
    EXPECT_EQ(stream.calls, Calls());
}

TEST(OCStream, ReadBufferThrowsAtTheEndOfTheDataAndKeepsWhatThereWas) {
    RecordingStream stream("0123");
    char buffer[11] = "----------";
    EXPECT_EQ(thrown<OXStream_ReadError>([&] { stream.readBuffer(buffer, 10); }),
              "OXStream_ReadError: Read from the stream failed");
    EXPECT_EQ(std::string(buffer), "0123------");
    EXPECT_EQ(stream.calls, Calls({"read 10 -> 4", "read 6 -> end"}));
}

TEST(OCStream, ReadBufferThrowsWhenThereAreNoData) {
    RecordingStream stream;
    char buffer[10];
    EXPECT_EQ(thrown<OXStream_ReadError>([&] { stream.readBuffer(buffer, 10); }),
              "OXStream_ReadError: Read from the stream failed");
    EXPECT_EQ(stream.calls, Calls({"read 10 -> end"}));
}

TEST(OCStream, ReadBufferTakesATrueReadOfNothingAsTheEnd) {
    RecordingStream stream("0123");
    stream.reads = {{2, 2, Outcome::Zero}};
    stream.chunk = 2;
    char buffer[4];
    EXPECT_EQ(thrown<OXStream_ReadError>([&] { stream.readBuffer(buffer, 4); }),
              "OXStream_ReadError: Read from the stream failed");
    EXPECT_EQ(stream.calls, Calls({"read 4 -> 2", "read 2 -> 0"}));
}

TEST(OCStream, ReadBufferLetsTheStreamsExceptionPass) {
    RecordingStream stream("0123");
    stream.chunk = 2;
    stream.reads = {{2, 2, Outcome::Throw}};
    char buffer[4];
    EXPECT_THROW(stream.readBuffer(buffer, 4), RecordingStream::Error);
    EXPECT_EQ(stream.calls, Calls({"read 4 -> 2", "read 2 -> thrown"}));
}

TEST(OCStream, BuffersEndWhenAStreamClaimsMoreThanItWasAskedFor) {
    class Boaster : public OCNullStream {
    public:
        bool read(void*, unsigned long& count) override {
            count += 100;
            return true;
        }
        bool write(const void*, unsigned long& count) override {
            count += 100;
            return true;
        }
    } stream;
    char buffer[4] = "abc";
    stream.readBuffer(buffer, 4);
    stream.writeBuffer(buffer, 4);
    EXPECT_EQ(std::string(buffer), "abc");

    /// Boasts only when it is asked for the rest.
    class LateBoaster : public OCNullStream {
    public:
        bool read(void*, unsigned long& count) override { return transfer(count); }
        bool write(const void*, unsigned long& count) override { return transfer(count); }
        int calls = 0;

    private:
        bool transfer(unsigned long& count) {
            count = count == 4 ? 1 : count + 100;
            return ++calls < 3;
        }
    } reader, writer;
    reader.readBuffer(buffer, 4);
    writer.writeBuffer(buffer, 4);
    EXPECT_EQ(reader.calls, 2);
    EXPECT_EQ(writer.calls, 2);
}

TEST(OCStream, WriteBufferOffersWhatIsStillMissing) {
    RecordingStream stream;
    stream.chunk = 4;
    stream.writeBuffer("0123456789", 10);
    EXPECT_EQ(stream.data, "0123456789");
    EXPECT_EQ(stream.calls, Calls({"write 10 -> 4", "write 6 -> 4", "write 2 -> 2"}));
}

TEST(OCStream, WriteBufferOfZeroBytesDoesNotWrite) {
    RecordingStream stream;
    stream.writeBuffer(nullptr, 0);
    EXPECT_EQ(stream.calls, Calls());
}

TEST(OCStream, WriteBufferThrowsWhenAWriteIsRefused) {
    RecordingStream stream;
    stream.chunk = 3;
    stream.writes = {{2, 2, Outcome::Refuse}};
    EXPECT_EQ(thrown<OXStream_WriteError>([&] { stream.writeBuffer("0123456789", 10); }),
              "OXStream_WriteError: Writing to the stream failed");
    EXPECT_EQ(stream.data, "012");
    EXPECT_EQ(stream.calls, Calls({"write 10 -> 3", "write 7 -> refused"}));
}

TEST(OCStream, WriteBufferThrowsWhenTheFirstWriteIsRefused) {
    RecordingStream stream;
    stream.writes = {{1, 1, Outcome::Refuse}};
    EXPECT_EQ(thrown<OXStream_WriteError>([&] { stream.writeBuffer("0123456789", 10); }),
              "OXStream_WriteError: Writing to the stream failed");
    EXPECT_EQ(stream.calls, Calls({"write 10 -> refused"}));
}

TEST(OCStream, WriteBufferForgivesSingleWritesOfNothing) {
    RecordingStream stream;
    stream.chunk = 4;
    stream.writes = {{1, 1, Outcome::Zero}, {3, 3, Outcome::Zero}, {5, 5, Outcome::Zero}};
    stream.writeBuffer("0123456789", 10);
    EXPECT_EQ(stream.data, "0123456789");
    EXPECT_EQ(stream.calls, Calls({"write 10 -> 0", "write 10 -> 4", "write 6 -> 0", "write 6 -> 4",
                                   "write 2 -> 0", "write 2 -> 2"}));
}

TEST(OCStream, WriteBufferThrowsAtTheSecondWriteOfNothingInARow) {
    RecordingStream stream;
    stream.chunk = 4;
    stream.writes = {{2, 3, Outcome::Zero}};
    EXPECT_EQ(thrown<OXStream_WriteError>([&] { stream.writeBuffer("0123456789", 10); }),
              "OXStream_WriteError: Writing to the stream failed");
    EXPECT_EQ(stream.data, "0123");
    EXPECT_EQ(stream.calls, Calls({"write 10 -> 4", "write 6 -> 0", "write 6 -> 0"}));
}

TEST(OCStream, WriteBufferLetsTheStreamsExceptionPass) {
    RecordingStream stream;
    stream.writes = {{1, 1, Outcome::Throw}};
    EXPECT_THROW(stream.writeBuffer("a", 1), RecordingStream::Error);
}

TEST(OCStream, LargeBuffersPassThroughStreamsThatDeliverOneByteAtATime) {
    std::string content;
    for (int i = 0; i < 5000; ++i)
        content += static_cast<char>(i * 7);
    RecordingStream stream;
    stream.recording = false;
    stream.chunk = 1;
    stream.writeBuffer(content.data(), content.size());
    EXPECT_EQ(stream.data, content);
    stream.position = 0;
    std::string read(content.size(), '\0');
    stream.readBuffer(read.data(), read.size());
    EXPECT_EQ(read, content);
}

TEST(OCStream, ADerivedStreamMayThrowFromItsDestructor) {
    class Throwing : public OCStream {
    public:
        ~Throwing() override { throw 7; }
        bool read(void*, unsigned long&) override { return false; }
        unsigned long seek(long, OEStreamSeek) override { return 0; }
        void setSize(unsigned long) override {}
        bool write(const void*, unsigned long&) override { return false; }
    };
    EXPECT_THROW({ Throwing stream; }, int);
}

TEST(OCNullStream, ReadIsFalseAndLeavesTheCount) {
    OCNullStream stream;
    char byte = 'x';
    unsigned long count = 5;
    EXPECT_FALSE(stream.read(&byte, count));
    EXPECT_EQ(count, 5U);
    EXPECT_EQ(byte, 'x');
    count = 0;
    EXPECT_FALSE(stream.read(&byte, count));
    EXPECT_EQ(count, 0U);
}

TEST(OCNullStream, WriteIsTrueAndLeavesTheCount) {
    OCNullStream stream;
    unsigned long count = 5;
    EXPECT_TRUE(stream.write("12345", count));
    EXPECT_EQ(count, 5U);
    count = 0;
    EXPECT_TRUE(stream.write(nullptr, count));
    EXPECT_EQ(count, 0U);
}

TEST(OCNullStream, IsAlwaysAtZeroAndEmpty) {
    OCNullStream stream;
    stream.writeBuffer("12345", 5);
    stream.setSize(100);
    EXPECT_EQ(stream.seek(50, StreamSeekBeginning), 0U);
    EXPECT_EQ(stream.seek(-50, StreamSeekEnd), 0U);
    EXPECT_EQ(stream.seek(1, static_cast<OEStreamSeek>(99)), 0U);
    stream.setPosition(~0UL);
    EXPECT_EQ(stream.getPosition(), 0U);
    EXPECT_EQ(stream.getSize(), 0U);
    EXPECT_TRUE(stream.isEmpty());
}

TEST(OCNullStream, HasNoWholeBufferToRead) {
    OCNullStream stream;
    char byte;
    EXPECT_EQ(thrown<OXStream_ReadError>([&] { stream.readBuffer(&byte, 1); }),
              "OXStream_ReadError: Read from the stream failed");
    stream.readBuffer(&byte, 0);
}

TEST(OXStream, LeavesStoreTheirClassMessageAndDetails) {
    EXPECT_EQ(thrown<OXStream_OperationUnsupported>(
                  [] { throw OXStream_OperationUnsupported("setSize"); }),
              "OXStream_OperationUnsupported: The stream operation is unsupported (setSize)");
    OXStream_OperationUnsupported unsupported("seek");
    EXPECT_EQ(unsupported.getDetails().getCount(), 1U);
    EXPECT_TRUE(unsupported.getDetails().getString(0) == "seek");
    EXPECT_EQ(OXStream_ReadError().getDetails().getCount(), 0U);
    EXPECT_EQ(OXStream_WriteError().getDetails().getCount(), 0U);
}

TEST(OXStream, LeavesDeriveFromTheFamilyWhichIsAbstract) {
    EXPECT_TRUE((std::is_base_of_v<OXAutoException, OXStream>));
    EXPECT_TRUE((std::is_base_of_v<OXStream, OXStream_OperationUnsupported>));
    EXPECT_TRUE((std::is_base_of_v<OXStream, OXStream_ReadError>));
    EXPECT_TRUE((std::is_base_of_v<OXStream, OXStream_WriteError>));
    EXPECT_FALSE(std::is_default_constructible_v<OXStream>);
    EXPECT_EQ(sizeof(OXStream_ReadError), sizeof(OXAutoException));
    EXPECT_EQ(sizeof(OXStream_WriteError), sizeof(OXAutoException));
    EXPECT_EQ(sizeof(OXStream_OperationUnsupported), sizeof(OXAutoException));
}
